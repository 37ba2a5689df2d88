// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/ContextMenuQuestion.h"
#include "Tests/EndToEnd/EditorFixture.h"
#include "Tests/Session/FileContent.h"

#include <QFileInfo>

namespace {

const QString askedKey = QStringLiteral("QNBAlreadyAskedToInstallCMM");

/// The pane with a plug-in for the file managers inside, which a second after the start it offers to install.
class ContextMenuOfferTest : public EditorFixture
{
protected:
    ContextMenuOfferTest()
        : installed_(
              session_.home().filePath(QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin")))
        , report_(session_.home().filePath(QStringLiteral("plug-in-report")))
    {
        session_.pane().addContextMenu();
        session_.setVariable(QStringLiteral("QUENBY_PLUG_IN_REPORT"), report_);
    }

    QString installed_;
    QString report_;
};

} // namespace

TEST_F(ContextMenuOfferTest, WhoSaysYesHasItInstalledAndRegistered)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_NO_FATAL_FAILURE(answerAlert(contextMenuQuestion, QStringLiteral("Return")));
    EXPECT_TRUE(waitUntil([&] { return contentOf(report_) == "register\n"; }))
        << contentOf(report_).constData();
    for (const QString &file :
         {QStringLiteral("/Contents/Info.plist"), QStringLiteral("/Contents/MacOS/QNBContextMenu")})
        EXPECT_EQ(contentOf(installed_ + file), contentOf(session_.pane().contextMenuPath() + file))
            << qPrintable(file);
    EXPECT_TRUE(QFileInfo(installed_ + QStringLiteral("/Contents/MacOS/QNBContextMenu")).isExecutable());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(askedKey), "none");
}

TEST_F(ContextMenuOfferTest, WhoSaysNoIsAskedAgainTheNextTime)
{
    for (int time = 0; time < 2; ++time) {
        ASSERT_NO_FATAL_FAILURE(openPane());
        ASSERT_NO_FATAL_FAILURE(answerAlert(contextMenuQuestion, QStringLiteral("Escape")));
        EXPECT_FALSE(QFileInfo::exists(installed_));
        ASSERT_NO_FATAL_FAILURE(leave());
        EXPECT_EQ(session_.domain().value(askedKey), "bool True");
    }
    EXPECT_EQ(contentOf(report_), "");
}

TEST_F(ContextMenuOfferTest, LeavingDuringTheQuestionAnswersNothing)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_TRUE(waitUntil([&] { return !pane_.alert().isEmpty(); }));
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(askedKey), "none");
    EXPECT_FALSE(QFileInfo::exists(installed_));
}
