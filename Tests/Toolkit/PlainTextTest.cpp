// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/PlainText.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

const QString markup = QStringLiteral("<h1>A</h1>\n<a href=\"file:///b\">c</a>\u202E");
const QString shownMarkup = QStringLiteral("<h1>A</h1>\n<a href=\"file:///b\">c</a><U+202E>");

void expectPlainLabels(const QWidget &window)
{
    const QList<QLabel *> labels = window.findChildren<QLabel *>();
    EXPECT_FALSE(labels.isEmpty());
    for (const QLabel *label : labels)
        EXPECT_EQ(label->textFormat(), Qt::PlainText) << qPrintable(label->text());
}

} // namespace

TEST(PlainTextTest, ALabelShowsWhatItIsGiven)
{
    const std::unique_ptr<QLabel> label(PlainText::label(markup));
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_EQ(label->text(), shownMarkup);
}

TEST(PlainTextTest, AllLabelsOfAMessageBoxDo)
{
    const std::unique_ptr<QMessageBox> box(PlainText::messageBox(markup, markup, markup));
    expectPlainLabels(*box);
    EXPECT_FALSE(box->text().contains(u'\n'));
    EXPECT_EQ(box->informativeText(), shownMarkup);
}

TEST(PlainTextTest, AProgressDialogDoes)
{
    const std::unique_ptr<QProgressDialog> dialog(
        PlainText::progressDialog(markup, QStringLiteral("Cancel"), 7));
    expectPlainLabels(*dialog);
    EXPECT_EQ(dialog->labelText(), shownMarkup);
    EXPECT_EQ(dialog->maximum(), 7);
}

TEST(PlainTextTest, AToolTipIsTheText)
{
    EXPECT_EQ(PlainText::toolTip(QStringLiteral("<b>a</b>")),
              QStringLiteral("<span>&lt;b&gt;a&lt;/b&gt;</span>"));
    EXPECT_EQ(PlainText::toolTip(QStringLiteral("one\ntwo")), QStringLiteral("<span>one<br>two</span>"));
}
