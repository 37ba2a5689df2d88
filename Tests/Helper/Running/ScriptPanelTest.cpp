// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/ScriptPanel.h"

#include "Tests/Platform/Files/FileFixture.h"

#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTextCursor>

#include <algorithm>
#include <optional>

namespace {

const QString hidden = QStringLiteral("rm -r important");

class ScriptPanelTest : public FileFixture
{
protected:
    /// Shows the panel that asks about a script of these bytes.
    void ask(const QByteArray &bytes)
    {
        const QString name = QStringLiteral("script");
        put(in(name), bytes);
        QFile::setPermissions(in(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        const Result<Script> script = Script::find(name, root());
        ASSERT_TRUE(script) << qPrintable(script.error);
        panel_.emplace(CreationOrder{.label = QStringLiteral("Letters"), .folder = root()}, *script,
                       [this](bool mayRun) { answers_.append(mayRun); });
        panel_->show();
        panel_->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&*panel_));
    }

    QPlainTextEdit &content() const { return *panel_->findChild<QPlainTextEdit *>(); }
    /// Whether its end is seen before anything is scrolled.
    bool isSeen(const QString &text) const
    {
        const QTextCursor end = content().document()->find(text);
        EXPECT_FALSE(end.isNull());
        return content().viewport()->rect().contains(content().cursorRect(end));
    }
    bool says(const QString &words) const
    {
        const QList<QLabel *> labels = panel_->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(), [&words](const QLabel *label) {
            return label->isVisible() && label->text().contains(words);
        });
    }

    std::optional<ScriptPanel> panel_;
    QList<bool> answers_;
};

} // namespace

TEST_F(ScriptPanelTest, WhatBlanksPushToTheRightIsSeen)
{
    ask("#!/bin/sh\necho harmless" + QByteArray(400, ' ') + "; " + hidden.toLatin1() + '\n');
    EXPECT_TRUE(isSeen(hidden));
}

TEST_F(ScriptPanelTest, WhatTabsOrALongWordPushToTheRightIsSeen)
{
    ask("#!/bin/sh\necho harmless" + QByteArray(60, '\t') + "; : " + QByteArray(400, 'x') + " ; " +
        hidden.toLatin1() + '\n');
    EXPECT_TRUE(isSeen(hidden));
}

TEST_F(ScriptPanelTest, WhatLineEndsPushDownIsCounted)
{
    ask("#!/bin/sh\n" + QByteArray(1300, '\n') + hidden.toLatin1());
    EXPECT_FALSE(isSeen(hidden));
    EXPECT_TRUE(says(QStringLiteral("Lines: ") + QLocale().toString(1302)));
}

TEST_F(ScriptPanelTest, NothingRunsUnlessItIsAllowed)
{
    ask("#!/bin/sh\n");
    QTest::keyClick(&*panel_, Qt::Key_Return);
    EXPECT_EQ(answers_, QList<bool>{false}) << "Return must not allow what nobody has read";
    ask("#!/bin/sh\n");
    panel_->close();
    EXPECT_EQ(answers_, QList<bool>({false, false}));
    ask("#!/bin/sh\n");
    QTest::keyClick(&content(), Qt::Key_R, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([this] { return answers_.size() == 3; }));
    EXPECT_EQ(answers_, QList<bool>({false, false, true}));
}
