// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/PropertyLists/PropertyListComparison.h"
#include "Platform/PropertyLists/PropertyList.h"
#include "Platform/PropertyLists/PropertyListDocument.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

bool areEqual(const QVariant &one, const QVariant &other)
{
    // One of them as a file would hold it.
    QString error;
    const PropertyListDocument::Ptr left = PropertyListDocument::fromVariant(one);
    const PropertyListDocument::Ptr right =
        PropertyListDocument::parse(PropertyList::write(other).bytes.value_or(QByteArray()), &error);
    EXPECT_TRUE(right) << qPrintable(error);
    return right && PropertyListComparison::areEqual(left->root(), right->root());
}

const double notANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(PropertyListComparisonTest, EveryKindOfValueEqualsItselfAndNoOther)
{
    const QVariantList values{true,
                              false,
                              0LL,
                              1LL,
                              -1LL,
                              std::numeric_limits<qulonglong>::max(),
                              0.0,
                              -0.0,
                              1.0,
                              notANumber,
                              QStringLiteral("1"),
                              QStringLiteral(""),
                              QByteArray("1"),
                              QByteArray(),
                              QDateTime(QDate(2026, 1, 1), QTime(8, 0), Qt::UTC),
                              QVariantList{},
                              QVariantList{1LL},
                              QVariantList{1LL, 2LL},
                              QVariantList{2LL, 1LL},
                              QVariantMap{},
                              QVariantMap{{QStringLiteral("a"), 1LL}},
                              QVariantMap{{QStringLiteral("b"), 1LL}},
                              QVariantMap{{QStringLiteral("a"), 1LL}, {QStringLiteral("b"), 1LL}},
                              QVariantMap{{QStringLiteral("a"), QVariantList{QVariantMap{}}}}};
    for (qsizetype i = 0; i < values.size(); ++i) {
        for (qsizetype j = 0; j < values.size(); ++j)
            EXPECT_EQ(areEqual(values[i], values[j]), i == j) << i << ' ' << j;
    }
}

TEST(PropertyListComparisonTest, TheOrderOfKeysCountsForNothing)
{
    const auto document = [](const char *entries) {
        QString error;
        return PropertyListDocument::parse(
            QByteArray("<plist version=\"1.0\"><dict>") + entries + "</dict></plist>", &error);
    };
    const auto ab = document("<key>a</key><integer>1</integer><key>b</key><dict/>");
    const auto ba = document("<key>b</key><dict/><key>a</key><integer>1</integer>");
    const auto swapped = document("<key>b</key><integer>1</integer><key>a</key><dict/>");
    EXPECT_TRUE(PropertyListComparison::areEqual(ab->root(), ba->root()));
    EXPECT_FALSE(PropertyListComparison::areEqual(ab->root(), swapped->root()));
}

TEST(PropertyListComparisonTest, NoDepthIsTooDeep)
{
    QVariant one = 1LL;
    QVariant other = 2LL;
    for (int level = 0; level < PropertyList::Limits::depth - 8; ++level) {
        one = QVariantList{one};
        other = QVariantList{other};
    }
    EXPECT_TRUE(areEqual(one, one));
    EXPECT_FALSE(areEqual(one, other));
}
