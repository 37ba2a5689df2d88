// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/WindowTextRules.h"

#include <gmock/gmock.h>

using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

SourceFile sourceFile(const char *path, const char *text)
{
    return {QString::fromLatin1(path), QString::fromUtf8(text)};
}

void expectNone(const QStringList &violations)
{
    for (const QString &violation : violations)
        ADD_FAILURE() << violation.toStdString();
}

} // namespace

TEST(WindowTextRulesTest, NoTextInAWindowCanBeMarkup)
{
    for (const SourceFile &source : SourceTree::files())
        expectNone(WindowTextRules::violationsOfPlainText(source));
}

TEST(WindowTextRulesTest, NoLabelOfTheInterfaceCanBeMarkup)
{
    const SourceFile interface = SourceTree::file(QStringLiteral("Resources/QNBPrefPane.ui"));
    ASSERT_TRUE(interface.text.contains(u"QLabel"));
    expectNone(WindowTextRules::violationsOfPlainInterface(interface));
}

TEST(WindowTextRulesTest, ThePlacesOfATextAreFilledInOneCall)
{
    for (const SourceFile &source : SourceTree::files())
        expectNone(WindowTextRules::violationsOfFilling(source));
}

TEST(WindowTextRulesTest, NoNameIsPrintedAsItIs)
{
    for (const SourceFile &source : SourceTree::files())
        expectNone(WindowTextRules::violationsOfPrinting(source));
}

TEST(WindowTextRulesTest, WhatCouldShowMarkupIsCaught)
{
    for (const char *code :
         {"auto *a = new QLabel(name);", "QLabel label(name);", "layout->addWidget(new QLabel);",
          "auto a = std::make_unique<QMessageBox>();", "QMessageBox::warning(this, a, b);",
          "QMessageBox box;", "new QProgressDialog(text, cancel, 0, 1)", "box->setInformativeText(text);",
          "dialog->setLabelText(name);", "item->setToolTip(path);",
          "item->setToolTip(tr(\"In %1\").arg(name));", "item->setToolTip(a ? tr(\"x\") : name);",
          "QToolTip::showText(at, text, this);", "if (role == Qt::ToolTipRole)", "view->setHtml(text);",
          "label->setTextFormat(Qt::PlainText);", "new QTextEdit(text)", "QInputDialog::getText(this, a, b)"})
        EXPECT_THAT(WindowTextRules::violationsOfPlainText(sourceFile("Helper/Running/A.cpp", code)),
                    SizeIs(1))
            << code;
    for (const char *code :
         {"QLabel *a = PlainText::label(name);", "// new QLabel(name)", "log(\"new QLabel(name)\");",
          "for (QLabel *label : labels)", "item->setToolTip(PlainText::toolTip(path));",
          "button->setToolTip(tr(\"Use no (shortcut)\"));",
          "button->setToolTip(isSet ? tr(\"One\") : tr(\"Other\"));",
          "button->setToolTip(isSet ? b : PlainText::toolTip(c));",
          "dialog->setLabelText(QFileDialog::Accept, title);",
          "connect(a, &QLabel::linkActivated, this, b);"})
        EXPECT_THAT(WindowTextRules::violationsOfPlainText(sourceFile("Helper/Running/A.cpp", code)),
                    IsEmpty())
            << code;
    EXPECT_THAT(WindowTextRules::violationsOfPlainText(sourceFile("Tests/Host/A.cpp", "QLabel a(name);")),
                IsEmpty());
}

TEST(WindowTextRulesTest, ALabelOfTheInterfaceThatCouldShowMarkupIsCaught)
{
    const char plain[] = "<property name=\"textFormat\"><enum>Qt::PlainText</enum></property>";
    const auto violations = [](const QByteArray &properties) {
        return WindowTextRules::violationsOfPlainInterface(
            {QStringLiteral("A.ui"),
             QString::fromUtf8("<ui><widget class=\"QWidget\" name=\"w\"><widget class=\"QLabel\" "
                               "name=\"l\">" +
                               properties + "</widget></widget></ui>")});
    };
    EXPECT_THAT(violations(plain), IsEmpty());
    EXPECT_THAT(violations(""), SizeIs(1));
    EXPECT_THAT(violations("<property name=\"textFormat\"><enum>Qt::RichText</enum></property>"), SizeIs(1));
    EXPECT_THAT(
        violations(QByteArray(plain) + "<property name=\"toolTip\"><string>&lt;b&gt;a</string></property>"),
        SizeIs(1));
    for (const char *kind : {"QTextEdit", "QTextBrowser"})
        EXPECT_THAT(violations(QByteArray(plain) + "<widget class=\"" + kind + "\" name=\"t\"/>"), SizeIs(1));
    EXPECT_THAT(violations(QByteArray(plain) + "<widget class=\"QPlainTextEdit\" name=\"t\"/>"), IsEmpty());
}

TEST(WindowTextRulesTest, FillingInTwoCallsIsCaught)
{
    for (const char *code :
         {"tr(\"%1 %2\").arg(a).arg(b)", "tr(\"%1 (%2)\")\n    .arg(f(a, \")\"))\n    .arg(b)"})
        EXPECT_THAT(WindowTextRules::violationsOfFilling(sourceFile("Source/A.cpp", code)), SizeIs(1))
            << code;
    for (const char *code : {"tr(\"%1 %2\").arg(a, b)", "f(x.arg(a), y.arg(b))", "a.arg(b) + c.arg(d)"})
        EXPECT_THAT(WindowTextRules::violationsOfFilling(sourceFile("Source/A.cpp", code)), IsEmpty())
            << code;
}

TEST(WindowTextRulesTest, PrintingANameAsItIsIsCaught)
{
    for (const char *code :
         {"std::fputs(qPrintable(name), stderr);", "qCWarning(log, f, qUtf16Printable(name));",
          "qCWarning(log).noquote() << name;"})
        EXPECT_THAT(WindowTextRules::violationsOfPrinting(sourceFile("Source/A.cpp", code)), SizeIs(1))
            << code;
    for (const char *code : {"std::fputs(qPrintable(lineText(name)), stderr);",
                             "qCWarning(log).noquote()\n    << linesText(name);", "qCWarning(log) << name;"})
        EXPECT_THAT(WindowTextRules::violationsOfPrinting(sourceFile("Source/A.cpp", code)), IsEmpty())
            << code;
}
