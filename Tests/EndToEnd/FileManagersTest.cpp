// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"
#include "Tests/Session/FileContent.h"

#include <QFileInfo>

namespace {

const QString toldKey = QStringLiteral("QNBAlreadyAskedToInstallCMM");
const QString hint = QStringLiteral("The presets can be put into the menus of Thunar.");
const QString without = QStringLiteral("The presets are not in the menus of Thunar yet.");
const QString with = QStringLiteral("The presets are in the menus of Thunar.\n"
                                    "In Thunar they show up once the file manager is started again.");

/// The pane with a plug-in for the file managers inside.
class FileManagersTest : public EditorFixture
{
protected:
    FileManagersTest()
        : installed_(
              session_.home().filePath(QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin")))
        , report_(session_.home().filePath(QStringLiteral("plug-in-report")))
    {
        session_.pane().addContextMenu();
        session_.setVariable(QStringLiteral("QUENBY_PLUG_IN_REPORT"), report_);
    }
    bool waitForLabel(const QString &text)
    {
        return waitUntil([&] { return pane_.label(text); }, patience);
    }

    QString installed_;
    QString report_;
};

} // namespace

TEST_F(FileManagersTest, InstallPutsThePresetsIntoTheMenusAndRemoveTakesThemOut)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    user_.presses(QStringLiteral("alt+g"));
    ASSERT_TRUE(waitForLabel(without));
    user_.presses(QStringLiteral("alt+i"));
    EXPECT_TRUE(waitForLabel(with));
    EXPECT_TRUE(contentOf(report_).contains("register\n")) << contentOf(report_).constData();
    for (const QString &file :
         {QStringLiteral("/Contents/Info.plist"), QStringLiteral("/Contents/MacOS/QNBContextMenu")})
        EXPECT_EQ(contentOf(installed_ + file), contentOf(session_.pane().contextMenuPath() + file))
            << qPrintable(file);
    EXPECT_TRUE(QFileInfo(installed_ + QStringLiteral("/Contents/MacOS/QNBContextMenu")).isExecutable());

    user_.presses(QStringLiteral("alt+r"));
    EXPECT_TRUE(waitForLabel(without));
    EXPECT_FALSE(QFileInfo::exists(installed_));
    EXPECT_TRUE(pane_.alert().isEmpty());
}

TEST_F(FileManagersTest, ANewUserIsToldOfItOnceAndAskedNothing)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    EXPECT_TRUE(waitForLabel(hint));
    EXPECT_TRUE(pane_.alert().isEmpty());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(toldKey), "bool True");

    const qsizetype before = contentOf(report_).count("list\n");
    ASSERT_NO_FATAL_FAILURE(openPane());
    ASSERT_TRUE(waitUntil([&] { return contentOf(report_).count("list\n") > before; }, patience));
    user_.presses(QStringLiteral("alt+g"));
    EXPECT_TRUE(waitForLabel(without));
    EXPECT_FALSE(pane_.label(hint));
    EXPECT_FALSE(QFileInfo::exists(installed_));
}
