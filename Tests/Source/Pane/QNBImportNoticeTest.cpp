// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBImportNotice.h"

#include <gtest/gtest.h>

namespace {

const QString reason = QStringLiteral("Permission denied");

PaneNotice noticeOf(int count)
{
    QList<QNBPresetImport::LeftOut> leftOut;
    for (int number = 1; number <= count; ++number)
        leftOut.append({QStringLiteral("/home/u/File %1.qnbp").arg(number), reason});
    return QNBImportNotice::of(leftOut);
}

} // namespace

TEST(QNBImportNotice, NamesTheFirstFileItsReasonAndHowManyMoreThereAre)
{
    EXPECT_EQ(noticeOf(1).text, QStringLiteral("“File 1.qnbp” was not imported: Permission denied."));
    EXPECT_EQ(noticeOf(2).text,
              QStringLiteral("“File 1.qnbp” was not imported: Permission denied. Nor was one more file."));
    EXPECT_EQ(noticeOf(12).text,
              QStringLiteral("“File 1.qnbp” was not imported: Permission denied. Nor were 11 more files."));
    EXPECT_EQ(noticeOf(1).kind, PaneNotice::Kind::LeftOut);
}

TEST(QNBImportNotice, TheDetailsNameEachOfThemUpToANumber)
{
    EXPECT_EQ(noticeOf(2).details, QStringLiteral("/home/u/File 1.qnbp: Permission denied\n"
                                                  "/home/u/File 2.qnbp: Permission denied"));
    EXPECT_FALSE(noticeOf(20).details.contains(u"more"));
    const QStringList lines = noticeOf(1000).details.split(u'\n');
    EXPECT_EQ(lines.size(), QNBImportNotice::mostNamed + 1);
    EXPECT_EQ(lines.constLast(), QStringLiteral("And 980 more"));
}

TEST(QNBImportNotice, WhatAStrangerNamedStaysOneLineAndNumberedPlacesStayFilled)
{
    const PaneNotice notice = QNBImportNotice::of(
        {{QStringLiteral("/tmp/%2\n\u202Egpj.qnbp"), QStringLiteral("an object of class \"\u001B[2J%3\"")}});
    EXPECT_EQ(notice.text, QStringLiteral("“%2␊<U+202E>gpj.qnbp” was not imported: "
                                          "an object of class \"␛[2J%3\"."));
    EXPECT_FALSE(notice.details.contains(u'\n'));
}
