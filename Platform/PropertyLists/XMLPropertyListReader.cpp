// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/XMLPropertyListReader.h"

#include "Platform/PropertyLists/PropertyListValues.h"
#include "Platform/PropertyLists/PropertyListVariant.h"
#include "Platform/PropertyLists/XMLPropertyListFormat.h"

#include <QStringDecoder>
#include <QXmlStreamReader>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

using namespace XMLPropertyListFormat;
namespace Limits = PropertyList::Limits;

namespace {

/// From "<" to ">". A property list needs no attributes but the one of "plist".
constexpr qsizetype longestTag = 4096;

/// Of an unknown element's name, in the log.
constexpr qsizetype longestNameShown = 40;

std::optional<QVariant> parseInteger(QStringView text)
{
    QStringView digits = text.trimmed();
    const bool negative = digits.startsWith(u'-');
    if (negative || digits.startsWith(u'+'))
        digits = digits.mid(1);
    const bool isHexadecimal = digits.startsWith(u"0x", Qt::CaseInsensitive);
    if (isHexadecimal)
        digits = digits.mid(2);
    // No second sign, no blanks: toULongLong() would take them.
    if (digits.isEmpty() || !digits.front().isLetterOrNumber())
        return std::nullopt;
    bool ok = false;
    const quint64 number = digits.toULongLong(&ok, isHexadecimal ? 16 : 10);
    constexpr quint64 most = quint64(std::numeric_limits<qint64>::max());
    if (!ok || (negative && number > most + 1))
        return std::nullopt;
    if (negative)
        return QVariant(qlonglong(0 - number));
    return number > most ? QVariant(qulonglong(number)) : QVariant(qlonglong(number));
}

std::optional<QVariant> parseReal(QStringView text)
{
    const QStringView number = text.trimmed();
    const bool negative = number.startsWith(u'-');
    const QStringView word = negative || number.startsWith(u'+') ? number.mid(1) : number;
    if (word.compare(u"infinity", Qt::CaseInsensitive) == 0 ||
        word.compare(u"inf", Qt::CaseInsensitive) == 0) {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        return QVariant(negative ? -infinity : infinity);
    }
    if (word.compare(u"nan", Qt::CaseInsensitive) == 0)
        return QVariant(std::numeric_limits<double>::quiet_NaN());
    bool ok = false;
    const double value = number.toDouble(&ok);
    if (ok)
        return QVariant(value);
    // A number too large for a double is infinity, one too small for it is 0; the sign stays.
    const QByteArray digits = word.toLatin1();
    double unused = 0;
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), unused);
    if (word.startsWith(u'-') || error != std::errc::result_out_of_range || end != digits.end())
        return std::nullopt;
    return QVariant(std::copysign(value, negative ? -1.0 : 1.0));
}

std::optional<QVariant> parseDate(QStringView text)
{
    const QStringView date = text.trimmed();
    constexpr QStringView shape = datePattern;
    if (date.size() != shape.size())
        return std::nullopt;
    for (qsizetype i = 0; i < shape.size(); ++i) {
        if (shape[i] == u'0' ? date[i] < u'0' || date[i] > u'9' : date[i] != shape[i])
            return std::nullopt;
    }
    const auto field = [date](qsizetype at, qsizetype size) { return date.mid(at, size).toInt(); };
    const QDate day(field(0, 4), field(5, 2), field(8, 2));
    const QTime time(field(11, 2), field(14, 2), field(17, 2));
    if (!day.isValid() || !time.isValid())
        return std::nullopt;
    return QVariant(QDateTime(day, time, Qt::UTC));
}

std::optional<QVariant> parseData(QStringView text)
{
    QByteArray base64;
    base64.reserve(text.size());
    for (const QChar character : text) {
        if (character.unicode() > 0x7f)
            return std::nullopt;
        if (!character.isSpace())
            base64.append(char(character.unicode()));
    }
    const auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(QVariant(*decoded)) : std::nullopt;
}

std::optional<QVariant> parseBoolean(QStringView text, bool value)
{
    return text.trimmed().isEmpty() ? std::optional(QVariant(value)) : std::nullopt;
}

/// The text in the encoding of its byte-order mark, the declared one, or else UTF-8. None if it is not valid
/// there.
std::optional<QString> decoded(const QByteArray &bytes)
{
    constexpr qsizetype longestDeclaration = 1000;
    QXmlStreamReader start(QString::fromLatin1(bytes.first(std::min(bytes.size(), longestDeclaration))));
    start.readNext();
    constexpr QStringConverter::Flag flag = QStringConverter::Flag::Stateless;
    const QByteArray declared = start.documentEncoding().toLatin1();
    QStringDecoder decoder =
        declared.isEmpty()
            ? QStringDecoder(QStringConverter::encodingForData(bytes, u'<').value_or(QStringConverter::Utf8),
                             flag)
            : QStringDecoder(declared.constData(), flag);
    if (!decoder.isValid())
        return std::nullopt;
    QString text = decoder(bytes);
    return !decoder.hasError() && text.isValidUtf16() ? std::optional(std::move(text)) : std::nullopt;
}

/// Why the text is not given to QXmlStreamReader, which compares each attribute with all before it, and adds
/// those of a document type to each element; empty if it may be. What is not well-formed it finds itself.
QString reasonAgainstParsing(QStringView text)
{
    constexpr std::pair<QStringView, QStringView> otherMarkup[] = {
        {u"<!--", u"-->"}, {u"<![CDATA[", u"]]>"}, {u"<?", u"?>"}};
    for (qsizetype at = text.indexOf(u'<'); at >= 0; at = text.indexOf(u'<', at)) {
        const QStringView rest = text.sliced(at);
        const bool isElement = !rest.startsWith(u"<!") && !rest.startsWith(u"<?");
        const auto *other =
            std::find_if(isElement ? std::end(otherMarkup) : std::begin(otherMarkup), std::end(otherMarkup),
                         [rest](const auto &markup) { return rest.startsWith(markup.first); });
        if (other != std::end(otherMarkup)) {
            at = text.indexOf(other->second, at + other->first.size());
            if (at < 0)
                break;
            continue;
        }
        const char16_t *character = rest.utf16();
        const char16_t *const end = character + std::min(rest.size(), longestTag);
        char16_t quote = 0;
        for (; character != end && (quote != 0 || *character != u'>'); ++character) {
            if (quote != 0 ? *character == quote : *character == u'"' || *character == u'\'')
                quote = quote != 0 ? 0 : *character;
            else if (*character == u'[' && quote == 0 && !isElement)
                return QStringLiteral("a document type with declarations of its own");
        }
        const qsizetype size = character - rest.utf16();
        if (size == longestTag)
            return QStringLiteral("a tag of more than %1 characters").arg(longestTag);
        at += size;
    }
    return {};
}

using Handle = PropertyListSource::Handle;

/// The handles of one document under way.
class Builder
{
public:
    explicit Builder(const QString &text)
        : reader_(text)
    {
        reader_.setNamespaceProcessing(false);
    }

    bool read();
    const QString &error() const { return error_; }
    Handle root() const { return handles_.front(); }
    std::unique_ptr<PropertyListValues> takeValues() { return std::move(values_); }

private:
    struct Frame
    {
        std::size_t firstHandle = 0;
        bool isDictionary = false;
    };

    bool refuse(const QString &reason);
    bool startElement();
    bool endElement();
    bool startContainer(bool isDictionary);
    /// Up to the end of the element.
    std::optional<QString> elementText();
    bool readKey();
    bool readScalar(QStringView name);
    bool add(Handle value);
    bool takesValue() const;

    QXmlStreamReader reader_;
    std::unique_ptr<PropertyListValues> values_ = std::make_unique<PropertyListValues>();
    std::vector<Frame> stack_;
    /// Of the containers under way the finished elements, or keys and values in turn; in the end the root.
    std::vector<Handle> handles_;
    bool sawElement_ = false;
    QString error_;
};

bool Builder::refuse(const QString &reason)
{
    error_ =
        QStringLiteral("XML property list, line %1: %2").arg(QString::number(reader_.lineNumber()), reason);
    return false;
}

bool Builder::read()
{
    for (;;) {
        switch (reader_.readNext()) {
        case QXmlStreamReader::StartElement:
            if (!startElement())
                return false;
            break;
        case QXmlStreamReader::EndElement:
            if (!endElement())
                return false;
            break;
        case QXmlStreamReader::Characters:
            if (!reader_.isWhitespace())
                return refuse(QStringLiteral("text between the values"));
            break;
        case QXmlStreamReader::EntityReference:
            return refuse(QStringLiteral("an undeclared entity"));
        case QXmlStreamReader::Invalid:
            return refuse(reader_.errorString());
        case QXmlStreamReader::EndDocument:
            return !handles_.empty() || refuse(QStringLiteral("no value"));
        default:
            break;
        }
    }
}

bool Builder::takesValue() const
{
    if (stack_.empty())
        return handles_.empty();
    return !stack_.back().isDictionary || (handles_.size() - stack_.back().firstHandle) % 2 == 1;
}

bool Builder::add(Handle value)
{
    handles_.push_back(value);
    return true;
}

bool Builder::startElement()
{
    const QStringView name = reader_.name();
    if (name == key)
        return readKey();
    if (name == plist && !sawElement_) {
        sawElement_ = true;
        return true;
    }
    sawElement_ = true;
    if (!takesValue())
        return refuse(QStringLiteral("a value without a key, or a second one"));
    if (name == dictionary || name == array)
        return startContainer(name == dictionary);
    // A copy: the reader reuses what the view shows.
    return readScalar(name.toString());
}

bool Builder::startContainer(bool isDictionary)
{
    if (stack_.size() == std::size_t(Limits::depth))
        return refuse(QStringLiteral("more than %1 levels of nesting").arg(Limits::depth));
    stack_.push_back({handles_.size(), isDictionary});
    return true;
}

bool Builder::endElement()
{
    // Only containers and the outermost element end here; the reader matches the names.
    if (stack_.empty())
        return true;
    const Frame frame = stack_.back();
    const std::size_t count = handles_.size() - frame.firstHandle;
    if (frame.isDictionary && count % 2 == 1)
        return refuse(QStringLiteral("a key without a value"));
    const Handle *const own = handles_.data() + frame.firstHandle;
    const Handle done =
        frame.isDictionary ? values_->addDictionary(own, count / 2) : values_->addArray(own, count);
    handles_.resize(frame.firstHandle);
    stack_.pop_back();
    return add(done);
}

std::optional<QString> Builder::elementText()
{
    QString text;
    for (;;) {
        switch (reader_.readNext()) {
        case QXmlStreamReader::Characters:
            text += reader_.text();
            break;
        case QXmlStreamReader::EndElement:
            return text;
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::ProcessingInstruction:
            break;
        case QXmlStreamReader::EntityReference:
            refuse(QStringLiteral("an undeclared entity"));
            return std::nullopt;
        case QXmlStreamReader::Invalid:
            refuse(reader_.errorString());
            return std::nullopt;
        default:
            refuse(QStringLiteral("an element inside a scalar"));
            return std::nullopt;
        }
    }
}

bool Builder::readKey()
{
    if (stack_.empty() || !stack_.back().isDictionary || takesValue())
        return refuse(QStringLiteral("a key where none belongs"));
    const std::optional<QString> text = elementText();
    if (text && text->size() > Limits::keySize)
        return refuse(QStringLiteral("a dictionary key of more than %1 characters").arg(Limits::keySize));
    return text && add(values_->addKey(*text));
}

bool Builder::readScalar(QStringView name)
{
    const std::optional<QString> text = elementText();
    if (!text)
        return false;
    if (name == string)
        return add(values_->addString(*text));

    std::optional<QVariant> value;
    if (name == integer)
        value = parseInteger(*text);
    else if (name == real)
        value = parseReal(*text);
    else if (name == date)
        value = parseDate(*text);
    else if (name == data)
        value = parseData(*text);
    else if (name == trueElement || name == falseElement)
        value = parseBoolean(*text, name == trueElement);
    if (!value)
        return refuse(QStringLiteral("no valid element <%1>").arg(name.left(longestNameShown)));
    return add(values_->addScalar(*PropertyList::typeOf(*value), *value));
}

} // namespace

PropertyListDocument::Ptr XMLPropertyListReader::parse(const QByteArray &bytes, QString *error)
{
    if (bytes.size() > Limits::inputSize) {
        *error = QStringLiteral("XML property list: larger than %1 bytes").arg(Limits::inputSize);
        return nullptr;
    }
    const std::optional<QString> text = decoded(bytes);
    if (!text) {
        *error = QStringLiteral("XML property list: not valid in its encoding");
        return nullptr;
    }
    if (const QString reason = reasonAgainstParsing(*text); !reason.isEmpty()) {
        *error = QStringLiteral("XML property list: ") + reason;
        return nullptr;
    }
    Builder builder(*text);
    if (!builder.read()) {
        *error = builder.error();
        return nullptr;
    }
    const Handle root = builder.root();
    return std::make_shared<const PropertyListDocument>(builder.takeValues(), root);
}
