// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// From the pane to the disk: nothing stands in for anything.

#include "Tests/EndToEnd/HelperFixture.h"
#include "Tests/EndToEnd/HelperProcesses.h"
#include "Tests/Session/FakeTray.h"
#include "Tests/Session/FileContent.h"
#include "Tests/Session/ThunarWindow.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

const QString weddingLabel = QStringLiteral("Wedding");
/// The numbers of the labels that were chosen, as file managers know them.
constexpr int blue = 4;
constexpr int red = 6;
const QString hotKey = QStringLiteral("ctrl+alt+p");

/// The label's number; -1 if there is no label at all.
int labelOf(const QString &path)
{
    char information[32];
    if (::getxattr(QFile::encodeName(path).constData(), "user.com.apple.FinderInfo", information,
                   sizeof information) != sizeof information)
        return -1;
    return (information[9] >> 1) & 7;
}

/// 0 if nothing is there.
mode_t permissionsOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// A user with the pane, the helper and the plug-in that were built, and one file manager.
class WholeRoadTest : public HelperFixture
{
protected:
    WholeRoadTest()
        : tray_(session_.busAddress())
        , target_(session_.home().filePath(QStringLiteral("projects")))
        , actions_(session_.home().configFolder() + QStringLiteral("/Thunar/uca.xml"))
    {
        session_.pane().addCompanions();
        QDir().mkpath(target_);
        QDir().mkpath(QFileInfo(actions_).path());
    }

    void addPreset()
    {
        const qsizetype count = pane_.presets().size();
        user_.presses(QStringLiteral("alt+n"));
        ASSERT_TRUE(waitUntil([&] { return pane_.presets().size() == count + 1; }, patience));
        user_.types(weddingLabel);
        user_.presses(QStringLiteral("Return"));
        ASSERT_TRUE(waitUntil([&] { return pane_.presets().constLast() == weddingLabel; }, patience));
        user_.presses(QStringLiteral("alt+f"));
        ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+shift+n"), QStringLiteral("Planning")));
        user_.presses(QStringLiteral("ctrl+5"));
        ASSERT_NO_FATAL_FAILURE(addItem(QStringLiteral("ctrl+n"), QStringLiteral("Budget.csv")));
        user_.presses(QStringLiteral("ctrl+1"));
        const qsizetype windows = screen_.windowsOf(host_->pid()).size();
        ASSERT_NO_FATAL_FAILURE(openMenu(QStringLiteral("Menu")));
        ASSERT_NO_FATAL_FAILURE(goToEntry(QStringLiteral("File Content")));
        ASSERT_NO_FATAL_FAILURE(openMenu(QStringLiteral("Right")));
        ASSERT_NO_FATAL_FAILURE(chooseEntry(content_));
        // A menu takes every key until it has closed.
        ASSERT_TRUE(waitUntil([&] { return screen_.windowsOf(host_->pid()).size() == windows; }, patience));
        ASSERT_NO_FATAL_FAILURE(openMenu(QStringLiteral("alt+s")));
        ASSERT_NO_FATAL_FAILURE(chooseEntry(QStringLiteral("Write Contents List.sh")));
    }
    /// Finds the preset by a part of its label in the window that the helper opens, and creates it.
    void chooseInLauncher(qint64 helper)
    {
        const QString launcher = screen_.windowOf(helper);
        ASSERT_TRUE(waitUntil([&] { return screen_.hasKeyboard(launcher); }, patience));
        user_.types(weddingLabel.right(4));
        user_.presses(QStringLiteral("Return"));
    }
    void chooseHotKey()
    {
        ASSERT_NO_FATAL_FAILURE(goToGeneralTab());
        user_.presses({QStringLiteral("alt+s"), QStringLiteral("space"), hotKey});
        const QString note = QStringLiteral("The shortcut is heard whichever window has the keyboard.");
        EXPECT_TRUE(waitUntil([&] { return pane_.label(note); }, patience)) << "the helper says so";
        user_.presses(QStringLiteral("alt+p"));
    }
    /// As the file managers' entries do; the running helper takes the order or refuses it.
    QDBusMessage orderFromTheHelper(const QString &preset, const QString &folder) const
    {
        const QString name = QStringLiteral("whole-road");
        QDBusMessage answer;
        {
            // The helper may be asking the tray meanwhile, which is in this process.
            const QDBusConnection bus = QDBusConnection::connectToBus(session_.busAddress(), name);
            QDBusMessage order = QDBusMessage::createMethodCall(
                QStringLiteral("org.quenby.QNBHelper"), QStringLiteral("/org/quenby/QNBHelper"),
                QStringLiteral("org.quenby.QNBHelper"), QStringLiteral("Create"));
            order << preset << QStringList(folder);
            const QDBusPendingCall call = bus.asyncCall(order);
            waitUntil([&] { return call.isFinished(); }, patience);
            answer = call.reply();
        }
        QDBusConnection::disconnectFromBus(name);
        return answer;
    }
    void expectWedding(const QString &folder)
    {
        const QString planning = folder + QStringLiteral("/Planning");
        const QString budget = planning + QStringLiteral("/Budget.csv");
        ASSERT_TRUE(waitUntil(
            [&] { return permissionsOf(budget) == 0764 && permissionsOf(planning) == 0764; }, patience));
        EXPECT_EQ(QDir(planning).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList(QStringLiteral("Budget.csv")));
        EXPECT_EQ(contentOf(budget), contentOf(session_.home().dataFolder() +
                                               QStringLiteral("/Quenby/File Content/") + content_));
        EXPECT_EQ(labelOf(planning), blue);
        EXPECT_EQ(labelOf(budget), red);
        const QString list = folder + QStringLiteral("/Contents.txt");
        EXPECT_TRUE(waitUntil([&] { return contentOf(list).contains("Budget.csv"); }, patience));
        EXPECT_TRUE(
            contentOf(list).startsWith(QFileInfo(folder).fileName().toUtf8() + "\nPreset: Wedding\n"));
        EXPECT_EQ(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  (QStringList{QStringLiteral("Contents.txt"), QStringLiteral("Planning")}));
    }

    FakeTray tray_;
    QString target_;
    /// The file manager's own file.
    QString actions_;
    const QString content_ = QStringLiteral("Event/Budget.csv");
};

} // namespace

TEST_F(WholeRoadTest, APresetComesFromThePaneToTheDisk)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    user_.presses(QStringLiteral("alt+g"));
    ASSERT_TRUE(waitUntil([&] { return pane_.canPress(QStringLiteral("Install")); }, patience));
    user_.presses(QStringLiteral("alt+i"));
    EXPECT_TRUE(waitUntil([&] { return contentOf(actions_).contains("Quenby"); }, patience))
        << "the plug-in has registered itself";
    ASSERT_TRUE(waitUntil([] { return helpers().size() == 1; }, patience));
    const qint64 helper = helpers().constFirst();
    EXPECT_EQ(QFileInfo(QStringLiteral("/proc/%1/exe").arg(helper)).symLinkTarget(),
              session_.pane().helperProgram());

    ASSERT_NO_FATAL_FAILURE(chooseHotKey());
    ASSERT_NO_FATAL_FAILURE(addPreset());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_TRUE(waitUntil([&] { return contentOf(actions_).contains(weddingLabel.toUtf8()); }, patience))
        << "the helper has the new preset put into the file managers' menus";
    EXPECT_EQ(helpers(), QList<qint64>{helper}) << "it runs on without the pane";

    const QDBusMessage answer = orderFromTheHelper(weddingLabel, target_);
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << qPrintable(answer.errorMessage());
    ASSERT_NO_FATAL_FAILURE(expectWedding(target_));

    const QString other = session_.home().filePath(QStringLiteral("other"));
    QDir().mkpath(other);
    ChildProcess commandLine(session_.pane().helperProgram(),
                             {QStringLiteral("--create"), weddingLabel, QStringLiteral("--in"), other},
                             session_.environment());
    ASSERT_TRUE(commandLine.waitForEnd(patience));
    EXPECT_TRUE(commandLine.hasReturned(0)) << commandLine.errors().constData();
    ASSERT_NO_FATAL_FAILURE(expectWedding(other));

    const QString client = session_.home().filePath(QStringLiteral("client"));
    QDir().mkpath(client);
    ThunarWindow thunar(screen_, reader_);
    ASSERT_NO_FATAL_FAILURE(thunar.open(QStringLiteral(QUENBY_THUNAR), client, QStringLiteral("0 items"),
                                        screen_.environmentFrom(session_.environment())));
    ASSERT_NO_FATAL_FAILURE(thunar.openMenuOfBackground());
    ASSERT_NO_FATAL_FAILURE(thunar.choosePreset(QStringLiteral("Quenby"), weddingLabel));
    ASSERT_NO_FATAL_FAILURE(expectWedding(client));

    // By the hot key, into the folder that was used last; what is there stays.
    const QString another = client + QStringLiteral("/Planning/Budget-%1.csv");
    user_.presses(hotKey);
    ASSERT_NO_FATAL_FAILURE(chooseInLauncher(helper));
    EXPECT_TRUE(waitUntil([&] { return QFileInfo::exists(another.arg(1)); }, patience));

    const FakeTray::Entry folders = tray_.menuWith(weddingLabel).child(weddingLabel);
    ASSERT_FALSE(folders.children.isEmpty());
    tray_.click(folders.children.constFirst());
    EXPECT_TRUE(waitUntil([&] { return QFileInfo::exists(another.arg(2)); }, patience));

    // By the last entry of the file manager's menu, for its folder.
    ASSERT_NO_FATAL_FAILURE(thunar.openMenuOfBackground());
    ASSERT_NO_FATAL_FAILURE(thunar.choosePreset(QStringLiteral("Quenby"), QStringLiteral("More…")));
    ASSERT_NO_FATAL_FAILURE(chooseInLauncher(helper));
    EXPECT_TRUE(waitUntil([&] { return QFileInfo::exists(another.arg(3)); }, patience));

    ASSERT_EQ(::kill(pid_t(helper), SIGTERM), 0);
    EXPECT_TRUE(waitUntil([] { return helpers().isEmpty(); }, patience));
}
