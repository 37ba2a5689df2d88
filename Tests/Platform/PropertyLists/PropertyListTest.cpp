// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyList.h"

#include "Platform/PropertyLists/KeyedArchiver.h"
#include "Platform/PropertyLists/PropertyListVariant.h"
#include "Tests/Platform/PropertyLists/BinaryDocument.h"

#include <QPoint>
#include <QStringConverter>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

using PropertyList::Form;

namespace {

constexpr qint64 lowest = std::numeric_limits<qint64>::min();
constexpr qint64 highest = std::numeric_limits<qint64>::max();

class PropertyListForms : public testing::TestWithParam<Form>
{
protected:
    static void expectRoundTrip(const QVariant &value)
    {
        const PropertyList::WriteResult written = PropertyList::write(value, GetParam());
        ASSERT_TRUE(written) << qPrintable(written.error);
        const PropertyList::ReadResult again = PropertyList::read(*written.bytes);
        ASSERT_TRUE(again) << qPrintable(again.error);
        EXPECT_TRUE(PropertyList::equal(value, *again.value)) << written.bytes->left(400).toStdString();
    }
};

QVariant nested(int levels, bool inDictionaries)
{
    QVariant value = inDictionaries ? QVariant(QVariantMap()) : QVariant(QVariantList());
    for (int level = 1; level < levels; ++level)
        value = inDictionaries ? QVariant(QVariantMap{{QStringLiteral("k"), value}})
                               : QVariant(QVariantList{value});
    return value;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Forms, PropertyListForms, testing::Values(Form::Binary, Form::XML),
                         [](const auto &form) { return form.param == Form::Binary ? "Binary" : "XML"; });

TEST_P(PropertyListForms, ScalarsKeepTypeAndValue)
{
    for (const qint64 number :
         {qint64(0), qint64(1), qint64(-1), qint64(127), qint64(128), qint64(255), qint64(256),
          qint64(65'535), qint64(65'536), qint64(4'294'967'295), qint64(4'294'967'296), lowest, highest})
        expectRoundTrip(QVariant(qlonglong(number)));
    expectRoundTrip(QVariant(qulonglong(highest) + 1));
    expectRoundTrip(QVariant(std::numeric_limits<qulonglong>::max()));
    for (const double number :
         {0.0, -0.0, 1.0, 0.1, -1e300, 5e-324, 1.7976931348623157e308, HUGE_VAL, -HUGE_VAL})
        expectRoundTrip(QVariant(number));
    expectRoundTrip(QVariant(std::numeric_limits<double>::quiet_NaN()));
    expectRoundTrip(QVariant(true));
    expectRoundTrip(QVariant(false));
    expectRoundTrip(QVariant(QByteArray()));
    expectRoundTrip(QVariant(QByteArray("\0\xff\x80 data", 8)));
    for (const auto &[year, month] :
         {std::pair(1, 12), {1901, 1}, {1969, 12}, {2001, 1}, {2070, 6}, {9999, 12}})
        expectRoundTrip(
            QVariant(QDateTime(QDate(year, month, 31 - (month == 6)), QTime(23, 59, 59), Qt::UTC)));
}

TEST_P(PropertyListForms, OneTrueAndOnePointZeroAreThreeValues)
{
    const QVariantList values{qlonglong(1), true, 1.0, qlonglong(0), false, 0.0, QStringLiteral("1")};
    expectRoundTrip(values);
    expectRoundTrip(QVariantList{qlonglong(-1), std::numeric_limits<qulonglong>::max()});
}

TEST_P(PropertyListForms, StringsOfEveryLengthAroundTheCountMarker)
{
    for (const int length : {0, 1, 14, 15, 16, 255, 256, 65'535, 65'536}) {
        expectRoundTrip(QString(length, u'a'));
        expectRoundTrip(QString(length, u'ä'));
        expectRoundTrip(QByteArray(length, 'd'));
        const int keyLength = std::min(length, int(PropertyList::Limits::keySize));
        expectRoundTrip(QVariantMap{{QString(keyLength, u'k'), QString(length, u'€')}});
    }
    expectRoundTrip(QStringLiteral("a\U0001F4C1b"));
    expectRoundTrip(QStringLiteral(" <&>\"' ]]> \t\n\r\r\n end "));
}

TEST_P(PropertyListForms, ContainersOfEverySizeAroundTheReferenceWidths)
{
    for (const int size : {0, 1, 14, 15, 16, 253, 254, 255, 256, 257, 65'533, 65'534, 65'535, 65'536}) {
        QVariantList array;
        QVariantMap dictionary;
        for (int i = 0; i < size; ++i) {
            array.append(qlonglong(i));
            if (i < 300)
                dictionary.insert(QString::number(i), qlonglong(i));
        }
        expectRoundTrip(array);
        expectRoundTrip(dictionary);
        expectRoundTrip(QVariantList{array, dictionary, QVariantMap{{QStringLiteral("inner"), array}}});
    }
}

TEST_P(PropertyListForms, NestingUpToTheLimitAndNotBeyond)
{
    for (const bool inDictionaries : {false, true}) {
        QVariant deepest = nested(PropertyList::Limits::depth, inDictionaries);
        expectRoundTrip(deepest);
        QVariant deeper = nested(PropertyList::Limits::depth + 1, inDictionaries);
        EXPECT_FALSE(PropertyList::write(deeper, GetParam()));
        PropertyList::destroy(deepest);
        PropertyList::destroy(deeper);
    }
}

TEST_P(PropertyListForms, WhatIsNoPropertyListIsRefusedAsAWhole)
{
    EXPECT_FALSE(
        PropertyList::write(QVariantList{QStringLiteral("good"), QVariant(QPoint(1, 2))}, GetParam()));
    EXPECT_FALSE(PropertyList::write(QVariant(QDateTime()), GetParam()));
}

TEST_P(PropertyListForms, AKeyOverTheLimitIsRefusedByReadersAndWriters)
{
    for (const char16_t character : {u'k', u'€'}) {
        const QString key(PropertyList::Limits::keySize, character);
        expectRoundTrip(QVariantMap{{key, true}});
        const QVariantMap over{{key + QChar(character), true}};
        const PropertyList::WriteResult written = PropertyList::write(over, GetParam());
        EXPECT_FALSE(written);
        EXPECT_FALSE(written.error.isEmpty());
        EXPECT_FALSE(KeyedArchiver::archivedDataWithRootObject(over));
    }
    const QByteArray over(PropertyList::Limits::keySize + 1, 'k');
    BinaryDocument document;
    const BinaryDocument::Ref top = document.dictionary({document.string(over)}, {document.boolean(true)});
    EXPECT_FALSE(PropertyList::read(document.bytes(top)));
    EXPECT_FALSE(PropertyList::read("<dict><key>" + over + "</key><true/></dict>"));
}

TEST(PropertyList, WhatIsSharedIsWrittenOnceAndReadAsOne)
{
    constexpr int references = 1000;
    const QByteArray data(100'000, 'd');
    const QString text(100'000, u't');
    const QVariant array = QVariantList(50, QVariantMap{{QStringLiteral("a"), data}});
    const QVariantMap entry{{QStringLiteral("data"), data}, {QStringLiteral("text"), text}};
    QVariantMap value{{QStringLiteral("array"), array}};
    for (int i = 0; i < references; ++i)
        value.insert(QString::number(i), i % 2 == 0 ? QVariant(entry) : QVariant(QVariantList{data, text}));
    for (const PropertyList::WriteResult &written :
         {PropertyList::write(value), KeyedArchiver::archivedDataWithRootObject(value)}) {
        ASSERT_TRUE(written) << qPrintable(written.error);
        EXPECT_LT(written.bytes->size(), 300'000);
    }
    const PropertyList::ReadResult read = PropertyList::read(*PropertyList::write(value).bytes);
    ASSERT_TRUE(read);
    const QVariantMap entries = read.value->toMap();
    const QByteArray first =
        entries.value(QStringLiteral("0")).toMap().value(QStringLiteral("data")).toByteArray();
    const QByteArray second = entries.value(QStringLiteral("1")).toList().constFirst().toByteArray();
    EXPECT_EQ(first, data);
    EXPECT_EQ(static_cast<const void *>(first.constData()), static_cast<const void *>(second.constData()));
    // XML has no way to share: it would be 233 MB.
    const PropertyList::WriteResult xml = PropertyList::write(value, Form::XML);
    EXPECT_FALSE(xml);
    EXPECT_FALSE(xml.error.isEmpty());
    EXPECT_TRUE(PropertyList::write(array, Form::XML));
}

TEST(PropertyList, ARealBeyondTheRangeOfADoubleIsInfinityAndOneBelowItIsZero)
{
    const auto real = [](const char *text) {
        const PropertyList::ReadResult result =
            PropertyList::read("<array><real>" + QByteArray(text) + "</real></array>");
        EXPECT_TRUE(result) << text << ": " << qPrintable(result.error);
        return result ? result.value->toList().constFirst() : QVariant();
    };
    // One in the last digit above the largest, as a writer that rounds spells that.
    EXPECT_TRUE(PropertyList::equal(real("1.797693134862316e+308"), HUGE_VAL));
    EXPECT_TRUE(PropertyList::equal(real(" -1e999 "), -HUGE_VAL));
    EXPECT_TRUE(PropertyList::equal(real("+1e99999999999999999999"), HUGE_VAL));
    EXPECT_TRUE(PropertyList::equal(real("1e-999"), 0.0));
    EXPECT_TRUE(PropertyList::equal(real("-1e-999"), -0.0));
    EXPECT_TRUE(PropertyList::equal(real("1.797693134862315e+308"), 1.797693134862315e+308));
    for (const char *text : {"1e999x", "1e", "--1e999", "1e999 1", "+-1e-999"})
        EXPECT_FALSE(PropertyList::read("<real>" + QByteArray(text) + "</real>")) << text;
}

TEST(PropertyList, AnIntegerOf16BytesHasItsSignInTheUpperHalf)
{
    const auto integer = [](quint64 high, quint64 low) {
        BinaryDocument document;
        QByteArray bytes;
        BinaryDocument::append(bytes, high, 8);
        BinaryDocument::append(bytes, low, 8);
        return PropertyList::read(document.bytes(document.integer(bytes, 4)));
    };
    constexpr quint64 ones = std::numeric_limits<quint64>::max();
    constexpr quint64 top = quint64(1) << 63;
    for (const auto &[low, value] : {std::pair(quint64(0), 0LL), {5, 5LL}, {top - 1, qlonglong(highest)}})
        EXPECT_TRUE(PropertyList::equal(*integer(0, low).value, value)) << low;
    for (const quint64 low : {top, top + 5, ones})
        EXPECT_TRUE(PropertyList::equal(*integer(0, low).value, qulonglong(low))) << low;
    for (const auto &[low, value] : {std::pair(ones, -1LL), {ones - 4, -5LL}, {top, qlonglong(lowest)}})
        EXPECT_TRUE(PropertyList::equal(*integer(ones, low).value, value)) << low;
    // Negative, and out of the range of a qint64; and larger than any quint64.
    EXPECT_FALSE(integer(ones, top - 1));
    EXPECT_FALSE(integer(ones, 5));
    EXPECT_FALSE(integer(ones - 1, ones));
    EXPECT_FALSE(integer(1, 0));
}

TEST(PropertyList, XMLIsReadInTheEncodingThatItSays)
{
    const QString text = QStringLiteral("\u00e9\u00df");
    const QString plain = QStringLiteral("<string>%1</string>").arg(text);
    const auto declared = [&plain](const char *encoding) {
        return QStringLiteral("<?xml version=\"1.0\" encoding='%1'?>\n%2")
            .arg(QLatin1String(encoding), plain);
    };
    QStringEncoder utf16(QStringEncoder::Utf16BE, QStringConverter::Flag::WriteBom);
    QStringEncoder utf32(QStringEncoder::Utf32LE, QStringConverter::Flag::WriteBom);
    for (const QByteArray &bytes :
         {plain.toUtf8(), "\xef\xbb\xbf" + plain.toUtf8(), declared("UTF-8").toUtf8(),
          "\xef\xbb\xbf" + declared("utf-8").toUtf8(), declared("ISO-8859-1").toLatin1(),
          QByteArray(utf16(plain)), QByteArray(utf32(declared("UTF-32")))}) {
        const PropertyList::ReadResult read = PropertyList::read(bytes);
        ASSERT_TRUE(read) << bytes.constData() << qPrintable(read.error);
        EXPECT_EQ(*read.value, QVariant(text)) << bytes.constData();
    }
    EXPECT_FALSE(PropertyList::read(plain.toLatin1()));
}

TEST(PropertyList, TheBinaryFormKeepsWhatXMLCannotHold)
{
    const QVariantList values{QVariant(),
                              QVariant::fromValue(PropertyList::UID{70'000}),
                              QVariant::fromValue(PropertyList::UID{std::numeric_limits<quint64>::max()}),
                              QString(QChar(0xd800)),
                              QString(QChar(0xdc00)) + QStringLiteral("tail"),
                              QString(QChar(u'\0')) + QStringLiteral("after"),
                              QString(QChar(0x1f)),
                              QString(QChar(0xffff)),
                              QVariant::fromValue(PropertyList::Date{HUGE_VAL}),
                              QVariant::fromValue(PropertyList::Date{1e300})};
    for (const QVariant &value : values) {
        const PropertyList::WriteResult written = PropertyList::write(value);
        ASSERT_TRUE(written) << qPrintable(written.error);
        const PropertyList::ReadResult again = PropertyList::read(*written.bytes);
        ASSERT_TRUE(again) << qPrintable(again.error);
        EXPECT_TRUE(PropertyList::equal(value, *again.value));
        EXPECT_FALSE(PropertyList::write(QVariantList{value}, Form::XML));
    }
    EXPECT_FALSE(PropertyList::write(QVariantMap{{QString(QChar(0xd800)), true}}, Form::XML));
}

TEST(PropertyList, DatesAreKeptToTheLastBit)
{
    // A whole number of milliseconds is a QDateTime, anything finer keeps its own type.
    EXPECT_EQ(PropertyList::dateValue(725'846'400.123).typeId(), int(QMetaType::QDateTime));
    for (const double seconds : {0.0, -0.0, 725'846'400.123456, -63'113'904'000.0, 1e-9, 9e15, -1e300}) {
        const QVariant date = PropertyList::dateValue(seconds);
        EXPECT_EQ(PropertyList::dateSeconds(date), seconds);
        const PropertyList::ReadResult again = PropertyList::read(*PropertyList::write(date).bytes);
        ASSERT_TRUE(again);
        EXPECT_TRUE(PropertyList::equal(date, *again.value)) << seconds;
    }
    const QDateTime local(QDate(2024, 2, 29), QTime(1, 2, 3, 456), Qt::OffsetFromUTC, 3600);
    const QVariant again = *PropertyList::read(*PropertyList::write(local).bytes).value;
    EXPECT_EQ(again.toDateTime(), local);
    EXPECT_EQ(again.toDateTime().timeSpec(), Qt::UTC);
}

TEST(PropertyList, IntegersOfEveryWidthOfCppAreTaken)
{
    const QVariant again =
        *PropertyList::read(*PropertyList::write(QVariantList{5, 5U, short(5), 5.5F}).bytes).value;
    EXPECT_TRUE(PropertyList::equal(again, QVariantList{qlonglong(5), qlonglong(5), qlonglong(5), 5.5}));
}

TEST(PropertyList, BooleanValuesAsThePlatformConvertsThem)
{
    using PropertyList::boolValue;
    for (const QStringView text :
         {u"YES", u"yes", u"True", u"t", u"1", u"9", u"  1", u"+1", u"-1", u"007", u" -00Y"})
        EXPECT_EQ(boolValue(text.toString()), true) << qPrintable(text.toString());
    for (const QStringView text : {u"", u"NO", u"false", u"0", u"000", u"on", u"x1", u"--1"})
        EXPECT_EQ(boolValue(text.toString()), false) << qPrintable(text.toString());
    EXPECT_EQ(boolValue(qlonglong(2)), true);
    EXPECT_EQ(boolValue(qlonglong(0)), false);
    EXPECT_EQ(boolValue(0.5), true);
    EXPECT_EQ(boolValue(0.0), false);
    EXPECT_EQ(boolValue(true), true);
    EXPECT_EQ(boolValue(QVariant()), std::nullopt);
    EXPECT_EQ(boolValue(QVariantList{true}), std::nullopt);
    EXPECT_EQ(boolValue(QByteArray("1")), std::nullopt);
}

TEST(PropertyList, IntegerValuesAsThePlatformConvertsThem)
{
    using PropertyList::integerValue;
    EXPECT_EQ(integerValue(QStringLiteral("12 apples")), 12);
    EXPECT_EQ(integerValue(QStringLiteral(" -7")), -7);
    EXPECT_EQ(integerValue(QStringLiteral("+8")), 8);
    EXPECT_EQ(integerValue(QStringLiteral("9223372036854775807")), highest);
    EXPECT_EQ(integerValue(QStringLiteral("9223372036854775808")), highest);
    EXPECT_EQ(integerValue(QStringLiteral("-9223372036854775808")), lowest);
    EXPECT_EQ(integerValue(QStringLiteral("-99999999999999999999999")), lowest);
    EXPECT_EQ(integerValue(QStringLiteral("x")), std::nullopt);
    EXPECT_EQ(integerValue(QStringLiteral("-")), std::nullopt);
    EXPECT_EQ(integerValue(2.9), 2);
    EXPECT_EQ(integerValue(-2.9), -2);
    EXPECT_EQ(integerValue(1e300), highest);
    EXPECT_EQ(integerValue(-HUGE_VAL), lowest);
    EXPECT_EQ(integerValue(std::numeric_limits<qulonglong>::max()), highest);
    EXPECT_EQ(integerValue(true), 1);
    EXPECT_EQ(integerValue(QVariant()), std::nullopt);
    EXPECT_EQ(integerValue(QVariantMap()), std::nullopt);
}
