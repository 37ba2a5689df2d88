// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/XMLPropertyListWriter.h"

#include "Platform/PropertyLists/KnownParts.h"
#include "Platform/PropertyLists/PropertyListVariant.h"
#include "Platform/PropertyLists/XMLPropertyListFormat.h"

#include <QSet>
#include <array>
#include <charconv>
#include <cmath>
#include <vector>

using namespace XMLPropertyListFormat;
using PropertyList::WriteResult;

namespace {

// No document type: no reader needs it, and some would fetch it.
constexpr QByteArrayView prologue = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<plist version=\"1.0\">\n";
constexpr QByteArrayView epilogue = "</plist>\n";

/// Indentation is for people; past this it would only make deep documents quadratic in size.
constexpr std::size_t deepestIndentation = 64;

struct Frame
{
    const QVariantList *array = nullptr;
    const QVariantMap *dictionary = nullptr;
    QVariantList::const_iterator nextElement;
    QVariantMap::const_iterator nextEntry;
};

/// Whether XML 1.0 has a place for every character.
bool isRepresentable(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        if (unit < 0x20 ? unit != u'\t' && unit != u'\n' && unit != u'\r' : unit >= 0xfffe)
            return false;
        if (QChar::isLowSurrogate(unit))
            return false;
        if (QChar::isHighSurrogate(unit)) {
            ++i;
            if (i == text.size() || !text[i].isLowSurrogate())
                return false;
        }
    }
    return true;
}

QByteArray realText(double number)
{
    if (std::isnan(number))
        return QByteArrayLiteral("nan");
    if (std::isinf(number))
        return number < 0 ? QByteArrayLiteral("-infinity") : QByteArrayLiteral("+infinity");
    // The shortest that reads back as the same number; QByteArray::number() would lose the sign of -0.
    std::array<char, 32> digits;
    const char *const end = std::to_chars(digits.begin(), digits.end(), number).ptr;
    return {digits.data(), end - digits.data()};
}

class Output
{
public:
    std::optional<QString> add(const QVariant &value);
    const QByteArray &bytes() const { return bytes_; }

private:
    void indent(std::size_t level) { bytes_.append(qsizetype(std::min(level, deepestIndentation)), '\t'); }
    void tag(QByteArrayView opening, QStringView name, QByteArrayView closing);
    void element(QStringView name, const QByteArray &content);
    bool text(QStringView name, QStringView text);
    /// False if the form has no place for it.
    bool scalar(PropertyListType type, const QVariant &value);
    bool dateElement(const QVariant &value);
    /// Before and after a scalar or a container with so many around it.
    void begin(const QVariant &value, std::size_t level);
    void end(std::size_t level);
    bool repeatsTooMuch() const;

    /// A part that is met again, and is not within such a part.
    struct Repetition
    {
        std::size_t level = 0;
        qsizetype start = 0;
    };
    std::optional<Repetition> repetition_;
    /// The bytes of all that have ended.
    qsizetype repeated_ = 0;
    /// The shared or large parts that were met.
    QSet<const void *> met_;
    QByteArray bytes_ = prologue.toByteArray();
};

void Output::tag(QByteArrayView opening, QStringView name, QByteArrayView closing)
{
    bytes_.append(opening);
    for (const QChar character : name)
        bytes_.append(char(character.unicode()));
    bytes_.append(closing);
}

void Output::element(QStringView name, const QByteArray &content)
{
    tag("<", name, ">");
    bytes_.append(content);
    tag("</", name, ">\n");
}

bool Output::text(QStringView name, QStringView text)
{
    if (!isRepresentable(text))
        return false;
    tag("<", name, ">");
    for (const char byte : text.toUtf8()) {
        switch (byte) {
        case '&':
            bytes_.append("&amp;");
            break;
        case '<':
            bytes_.append("&lt;");
            break;
        case '>':
            bytes_.append("&gt;");
            break;
        case '\r':
            // As it is, a reader would take it for the end of a line, and make it a line feed.
            bytes_.append("&#13;");
            break;
        default:
            bytes_.append(byte);
        }
    }
    tag("</", name, ">\n");
    return true;
}

bool Output::dateElement(const QVariant &value)
{
    const double seconds = std::floor(*PropertyList::dateSeconds(value));
    const QDateTime time = PropertyList::dateValue(seconds).toDateTime();
    // Four digits for the year.
    if (!time.isValid() || time.date().year() < 1 || time.date().year() > 9999)
        return false;
    element(date, time.toString(Qt::ISODate).toLatin1());
    return true;
}

bool Output::scalar(PropertyListType type, const QVariant &value)
{
    switch (type) {
    case PropertyListType::Boolean:
        tag("<", value.toBool() ? trueElement : falseElement, "/>\n");
        return true;
    case PropertyListType::Integer:
        element(integer, value.toString().toLatin1());
        return true;
    case PropertyListType::Real:
        element(real, realText(value.toDouble()));
        return true;
    case PropertyListType::Date:
        return dateElement(value);
    case PropertyListType::Data:
        element(data, value.toByteArray().toBase64());
        return true;
    case PropertyListType::String:
        return text(string, value.toString());
    default:
        return false;
    }
}

void Output::begin(const QVariant &value, std::size_t level)
{
    if (repetition_)
        return;
    const int type = value.typeId();
    const void *const identity = type == QMetaType::QString      ? KnownParts::identity(value.toString())
                                 : type == QMetaType::QByteArray ? KnownParts::identity(value.toByteArray())
                                                                 : KnownParts::identity(value);
    if (identity && met_.contains(identity))
        repetition_ = {level, bytes_.size()};
    else if (identity)
        met_.insert(identity);
}

void Output::end(std::size_t level)
{
    if (!repetition_ || repetition_->level != level)
        return;
    repeated_ += bytes_.size() - repetition_->start;
    repetition_.reset();
}

bool Output::repeatsTooMuch() const
{
    using namespace PropertyList::Limits;
    const qint64 repeated = repeated_ + (repetition_ ? bytes_.size() - repetition_->start : 0);
    return repeated > repetitionPerByte * (bytes_.size() - repeated) + repetitionBesides;
}

/// The reason why not, if the form cannot hold the value.
std::optional<QString> Output::add(const QVariant &value)
{
    const auto unrepresentable = [](const QVariant &part) {
        return QStringLiteral("a value of type %1 has no XML form")
            .arg(QString::fromLatin1(part.metaType().name()));
    };
    std::vector<Frame> stack;
    const QVariant *next = &value;
    while (next || !stack.empty()) {
        if (next) {
            const std::optional<PropertyListType> type = PropertyList::typeOf(*next);
            if (!type)
                return unrepresentable(*next);
            begin(*next, stack.size());
            indent(stack.size());
            const QVariantList *const list = PropertyList::arrayIn(*next);
            const QVariantMap *const map = PropertyList::dictionaryIn(*next);
            if (list || map) {
                if (stack.size() == std::size_t(PropertyList::Limits::depth))
                    return QStringLiteral("more than %1 levels of nesting").arg(PropertyList::Limits::depth);
                const bool isEmpty = list ? list->isEmpty() : map->isEmpty();
                tag("<", list ? array : dictionary, isEmpty ? "/>\n" : ">\n");
                if (list && !isEmpty)
                    stack.push_back({list, nullptr, list->cbegin(), {}});
                else if (!isEmpty)
                    stack.push_back({nullptr, map, {}, map->cbegin()});
            } else if (!scalar(*type, *next)) {
                return unrepresentable(*next);
            } else {
                end(stack.size());
            }
            if (repeatsTooMuch())
                return QStringLiteral("shared parts would be repeated too often");
            next = nullptr;
            continue;
        }
        Frame &frame = stack.back();
        if (frame.array && frame.nextElement != frame.array->cend()) {
            next = &*frame.nextElement++;
        } else if (frame.dictionary && frame.nextEntry != frame.dictionary->cend()) {
            indent(stack.size());
            if (frame.nextEntry.key().size() > PropertyList::Limits::keySize)
                return QStringLiteral("a dictionary key of more than %1 characters")
                    .arg(PropertyList::Limits::keySize);
            if (!text(key, frame.nextEntry.key()))
                return unrepresentable(frame.nextEntry.key());
            next = &frame.nextEntry.value();
            ++frame.nextEntry;
        } else {
            const bool isArray = frame.array;
            stack.pop_back();
            indent(stack.size());
            tag("</", isArray ? array : dictionary, ">\n");
            end(stack.size());
        }
        if (bytes_.size() > PropertyList::Limits::inputSize)
            return QStringLiteral("larger than %1 bytes").arg(PropertyList::Limits::inputSize);
    }
    bytes_.append(epilogue);
    return std::nullopt;
}

} // namespace

WriteResult XMLPropertyListWriter::write(const QVariant &value)
{
    Output output;
    if (std::optional<QString> error = output.add(value))
        return {std::nullopt, *error};
    if (output.bytes().size() > PropertyList::Limits::inputSize)
        return {std::nullopt, QStringLiteral("larger than %1 bytes").arg(PropertyList::Limits::inputSize)};
    return {output.bytes(), {}};
}
