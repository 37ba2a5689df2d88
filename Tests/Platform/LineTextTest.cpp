// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/LineText.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

namespace {

QString shown(const char16_t *text)
{
    return lineText(QString::fromUtf16(text));
}

} // namespace

TEST(LineTextTest, ControlCharactersOfAsciiAreShownByTheirPictures)
{
    EXPECT_EQ(shown(u"line\nbreak\tand tab\x1b[2J\x7f"), QStringLiteral("line␊break␉and tab␛[2J␡"));
    EXPECT_EQ(lineText(QString(QChar::Null)), QStringLiteral("␀"));
}

TEST(LineTextTest, WhatIsNotSeenIsShownByItsNumber)
{
    EXPECT_EQ(shown(u"\x80\x85\x9b"), QStringLiteral("<U+0080><U+0085><U+009B>"));
    EXPECT_EQ(shown(u"\u2028\u2029"), QStringLiteral("<U+2028><U+2029>"));
    for (const char32_t character :
         {U'\u061C', U'\u200B', U'\u200C', U'\u200D', U'\u200E',    U'\u200F', U'\u202A',
          U'\u202B', U'\u202C', U'\u202D', U'\u202E', U'\u2060',    U'\u2066', U'\u2067',
          U'\u2068', U'\u2069', U'\uFEFF', U'\u00AD', U'\u034F',    U'\u115F', U'\u3164',
          U'\uFFA0', U'\uFE0F', U'\uFFF9', U'\uFFFF', U'\U000E0041'}) {
        const QString text = u'a' + QStringView(QChar::fromUcs4(character)).toString() + u'b';
        const QString number = QString::number(uint(character), 16).toUpper().rightJustified(4, u'0');
        EXPECT_EQ(lineText(text), QStringLiteral("a<U+%1>b").arg(number));
    }
}

TEST(LineTextTest, HalfACharacterIsShownByItsNumber)
{
    EXPECT_EQ(lineText(QString(QChar(0xD83D))), QStringLiteral("<U+D83D>"));
    EXPECT_EQ(lineText(QString(QChar(0xDE00)) + u'a'), QStringLiteral("<U+DE00>a"));
    EXPECT_EQ(lineText(QString(QChar(0xD83D)) + QChar(0xD83D) + QChar(0xDE00)),
              QStringLiteral("<U+D83D>\U0001F600"));
}

TEST(LineTextTest, NamesInEveryScriptStayAsTheyAre)
{
    for (const char16_t *name : {
             u"",
             u"Letters/R&D Invoice.rtf",
             u"Łódź – “Köln”",
             u"e\u0301te\u0301",
             u"Ελλάδα",
             u"Москва",
             u"שלום עולם",
             u"مرحبا بالعالم",
             u"می\u200Cخواهم",
             u"नमस्ते",
             u"क्\u200Dष",
             u"வணக்கம்",
             u"ภาษาไทย",
             u"中文名字",
             u"日本語",
             u"한국어",
             u"葛\U000E0100",
             u"\u0601١٢",
             u"😀 👩\u200D💻 👩🏽\u200D💻",
             u"🏳\uFE0F\u200D🌈",
             u"❤\uFE0F",
             u"1\uFE0F\u20E3",
             u"\uE000",
             u"\uFFFD",
             u"a\u00A0b\u3000c",
         })
        EXPECT_EQ(shown(name), QString::fromUtf16(name));
}

TEST(LineTextTest, AJoinerOrSelectorWithoutEffectIsShown)
{
    EXPECT_EQ(shown(u"\u200Dक"), QStringLiteral("<U+200D>क"));
    EXPECT_EQ(shown(u"م\u200C"), QStringLiteral("م<U+200C>"));
    EXPECT_EQ(shown(u"م\u200Ca"), QStringLiteral("م<U+200C>a"));
    EXPECT_EQ(shown(u"❤\uFE0F\uFE0F"), QStringLiteral("❤\uFE0F<U+FE0F>"));
    EXPECT_EQ(shown(u"1\uFE0F"), QStringLiteral("1<U+FE0F>"));
}

TEST(LineTextTest, WhatWasShownIsShownAgainAsItIs)
{
    // The planes with characters in them, and some room behind.
    for (const auto &[first, last] : {std::pair(0x0, 0x1FFFF), std::pair(0xE0000, 0xE0FFF)}) {
        QString every;
        for (int character = first; character <= last; ++character)
            every += QStringView(QChar::fromUcs4(char32_t(character)));
        const QString once = lineText(every);
        EXPECT_EQ(lineText(once), once);
        EXPECT_TRUE(std::none_of(once.begin(), once.end(), [](QChar character) {
            return character < u' ' || (character >= u'\x7f' && character <= u'\x9f');
        }));
    }
}

TEST(LineTextTest, ANameOfOtherBytesShowsThem)
{
    EXPECT_EQ(lineText(QByteArray("caf\xc3\xa9 \xf0\x9f\x98\x80")), QStringLiteral("café 😀"));
    EXPECT_EQ(lineText(QByteArray("caf\xe9.txt")), QStringLiteral("caf<0xE9>.txt"));
    EXPECT_EQ(lineText(QByteArray("\xff\xc3\n")), QStringLiteral("<0xFF><0xC3>␊"));
    EXPECT_EQ(lineText(QByteArray("\xed\xa0\x80 \xc0\x80")),
              QStringLiteral("<0xED><0xA0><0x80> <0xC0><0x80>"));
    EXPECT_EQ(lineText(QByteArray("\xef\xbb\xbf"
                                  "a\xff\xef\xbb\xbf")),
              QStringLiteral("<U+FEFF>a<0xFF><U+FEFF>"));
    EXPECT_EQ(lineText(QByteArray()), QString());
}

TEST(LineTextTest, LinesKeepTheirEndsAndTabs)
{
    EXPECT_EQ(linesText(QStringLiteral("one\n\ttwo\r\n\u202Ethree\u2028")),
              QStringLiteral("one\n\ttwo<U+000D>\n<U+202E>three<U+2028>"));
    EXPECT_EQ(linesText(QByteArray("one\n\ttw\xf6\r\n")), QStringLiteral("one\n\ttw<0xF6><U+000D>\n"));
}

TEST(LineTextTest, JsonEscapesWhatIsNotSeenAndKeepsItsValues)
{
    const QJsonObject object{
        {QStringLiteral("a\u2066"), QStringLiteral("\u009B2J\x7f\n caf\u00e9 \U0001F600\U000E0041")}};
    const QByteArray escaped = escapedJson(QJsonDocument(object).toJson());
    EXPECT_EQ(escaped,
              "{\n    \"a\\u2066\": \"\\u009b2J\\u007f\\n caf\xc3\xa9 \xf0\x9f\x98\x80\\udb40\\udc41\"\n}\n");
    EXPECT_EQ(QJsonDocument::fromJson(escaped).object(), object);
}
