// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/LineText.h"

#include <QChar>
#include <QList>
#include <QStringDecoder>

#include <algorithm>
#include <iterator>

namespace {

constexpr char32_t zeroWidthNonJoiner = 0x200C;
constexpr char32_t zeroWidthJoiner = 0x200D;
constexpr char32_t keycap = 0x20E3;

struct Range
{
    char32_t first;
    char32_t last;
};

template <std::size_t count>
bool isIn(const Range (&ranges)[count], char32_t character)
{
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range &range) {
        return character >= range.first && character <= range.last;
    });
}

/// They choose the form of the character before them.
constexpr Range variationSelectors[] = {
    {0x180B, 0x180D}, {0x180F, 0x180F}, {0xFE00, 0xFE0F}, {0xE0100, 0xE01EF}};

/// What is seen as nothing though the library does not call it a format character: Unicode's "default
/// ignorable code points".
constexpr Range ignorable[] = {{0x034F, 0x034F}, {0x115F, 0x1160},   {0x17B4, 0x17B5},  {0x180B, 0x180F},
                               {0x2065, 0x2065}, {0x3164, 0x3164},   {0xFE00, 0xFE0F},  {0xFFA0, 0xFFA0},
                               {0xFFF0, 0xFFF8}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}};

/// Format characters that are seen: number signs and the like, which go around the digits that follow.
constexpr Range seenFormats[] = {{0x0600, 0x0605}, {0x06DD, 0x06DD},   {0x070F, 0x070F},  {0x0890, 0x0891},
                                 {0x08E2, 0x08E2}, {0x110BD, 0x110BD}, {0x110CD, 0x110CD}};

bool isHidden(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    case QChar::Other_Format:
        return !isIn(seenFormats, character);
    default:
        return QChar::isNonCharacter(character) || isIn(ignorable, character);
    }
}

/// Whether it is a symbol, or of a script that is written with joiners or variation selectors.
bool takesJoiners(char32_t character)
{
    if (isHidden(character))
        return false;
    switch (QChar::category(character)) {
    case QChar::Symbol_Other:
    case QChar::Symbol_Math:
    case QChar::Symbol_Modifier:
        return character > 0x7F;
    default:
        break;
    }
    switch (QChar::script(character)) {
    case QChar::Script_Unknown:
    case QChar::Script_Inherited:
    case QChar::Script_Common:
    case QChar::Script_Latin:
    case QChar::Script_Greek:
    case QChar::Script_Cyrillic:
        return false;
    default:
        return true;
    }
}

/// Which joiners and variation selectors are spelling, and not merely hidden: told character after character.
class Spelling
{
public:
    bool takes(char32_t character, char32_t next)
    {
        const bool isSelector = isIn(variationSelectors, character);
        const bool isJoiner = character == zeroWidthJoiner || character == zeroWidthNonJoiner;
        const bool isSpelling = isSelector ? !isSelected_ && (takesJoiners(base_) || next == keycap)
                                           : isJoiner && takesJoiners(base_) && takesJoiners(next);
        // Marks that any script may have stand between a letter and what belongs to it.
        if (isHidden(character) ? !isSpelling : QChar::script(character) != QChar::Script_Inherited)
            base_ = isHidden(character) ? 0 : character;
        isSelected_ = isSpelling && isSelector;
        return isSpelling;
    }

private:
    /// The letter or symbol before; 0 for none.
    char32_t base_ = 0;
    bool isSelected_ = false;
};

QString numberOf(char32_t character)
{
    return QStringLiteral("<U+%1>").arg(QString::number(character, 16).toUpper().rightJustified(4, u'0'));
}

/// As short as it can be shown.
QString pictureOf(char32_t character)
{
    constexpr char16_t controlPictures = 0x2400;
    constexpr char16_t deletePicture = 0x2421;
    if (character < U' ')
        return QChar(char16_t(controlPictures + character));
    return character == U'\x7f' ? QString(QChar(deletePicture)) : numberOf(character);
}

/// A mark of the byte order is a character like others here: one that is not seen.
constexpr auto decoding = QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom;

/// With bytes that are no UTF-8 shown by their values.
QString decoded(const QByteArray &bytes)
{
    QStringDecoder whole(QStringDecoder::Utf8, decoding);
    QString text = whole(bytes);
    if (!whole.hasError())
        return text;
    text.clear();
    for (qsizetype i = 0; i < bytes.size();) {
        // The longest sequence that one character can be; a shorter one is what is left of it.
        constexpr qsizetype longestSequence = 4;
        QString character;
        qsizetype length = std::min(longestSequence, bytes.size() - i);
        for (; length > 0; --length) {
            QStringDecoder decoder(QStringDecoder::Utf8, decoding);
            character = decoder(QByteArrayView(bytes).sliced(i, length));
            if (!decoder.hasError())
                break;
        }
        if (length > 0)
            text += character;
        else
            text += QStringLiteral("<0x%1>").arg(
                QString::number(uchar(bytes[i]), 16).toUpper().rightJustified(2, u'0'));
        i += std::max<qsizetype>(length, 1);
    }
    return text;
}

QString withHiddenShown(const QString &text, QStringView kept)
{
    // Nearly every text is of letters alone; those of ASCII are known at a glance.
    const bool isPlain = std::all_of(
        text.begin(), text.end(), [](QChar character) { return character >= u' ' && character < u'\x7f'; });
    if (isPlain)
        return text;
    QList<uint> characters;
    characters.reserve(text.size());
    // One by one: QString::toUcs4() turns a lone surrogate into the replacement character.
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        characters.append(isPair ? QChar::surrogateToUcs4(text[i], text[i + 1]) : text[i].unicode());
        i += isPair ? 1 : 0;
    }
    QString result;
    result.reserve(text.size());
    Spelling spelling;
    for (qsizetype i = 0; i < characters.size(); ++i) {
        const char32_t character = characters[i];
        const bool isSpelling = spelling.takes(character, characters.value(i + 1));
        const bool isKept = character <= U' ' && kept.contains(QChar(char16_t(character)));
        if (isKept || !isHidden(character) || isSpelling)
            result += QStringView(QChar::fromUcs4(character));
        else
            result += kept.isEmpty() ? pictureOf(character) : numberOf(character);
    }
    return result;
}

} // namespace

QString lineText(const QString &text)
{
    return withHiddenShown(text, {});
}

QString lineText(const QByteArray &name)
{
    return lineText(decoded(name));
}

QString linesText(const QString &text)
{
    return withHiddenShown(text, u"\n\t");
}

QString linesText(const QByteArray &text)
{
    return linesText(decoded(text));
}

QByteArray escapedJson(const QByteArray &json)
{
    QByteArray result;
    const QString text = QString::fromUtf8(json);
    for (const char32_t character : text.toStdU32String()) {
        // What is below stands between the values; in them it is escaped already.
        if (character < U' ' || !isHidden(character)) {
            result += QString::fromUcs4(&character, 1).toUtf8();
            continue;
        }
        const QString units = QString::fromUcs4(&character, 1);
        for (const QChar unit : units)
            result += "\\u" + QByteArray::number(unit.unicode(), 16).rightJustified(4, '0');
    }
    return result;
}
