// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The programs run in a home of their own, and what they leave there is compared with Documentation/files.md.

#include "Helper/History.h"
#include "Helper/Journals.h"
#include "Platform/Desktop/SharedFileList.h"
#include "Source/Model/QNBPresetFile.h"
#include "Source/Model/QNBRecoveryFile.h"
#include "Tests/EndToEnd/PaneCopy.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/FileContent.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/TemporaryHome.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

const QString bundleCode = QStringLiteral(QUENBY_BUNDLE "/Contents/MacOS/");
const QString helperProgram = PaneCopy::builtHelperProgram();
const QString menuProgram =
    bundleCode + QStringLiteral("QNBContextMenu.plugin/Contents/MacOS/QNBContextMenu");

const QByteArray domain = R"(<plist version="1.0"><dict>
<key>QNBLaunchHelperOnStart</key><false/>
<key>QNBPresetsStored</key><dict><key>loaded</key><true/></dict>
<key>QNBPresets</key><array><dict>
  <key>label</key><string>One</string>
  <key>scriptFile</key><string>mine.sh</string>
  <key>fileHierarchy</key><dict>
    <key>filename</key><string></string><key>isFolder</key><true/>
    <key>children</key><array><dict><key>filename</key><string>made</string><key>later</key><true/></dict></array>
  </dict>
</dict></array>
</dict></plist>)";

/// A row of the table.
struct Row
{
    QString file;
    QRegularExpression pattern;
    QSet<mode_t> modes;
    /// Written, but not by this test.
    bool isMarked = false;
    QSet<mode_t> found = {};

    bool isFolder() const { return file.endsWith(u'/'); }
    /// Of a name that says nothing.
    bool isAnything() const { return isMarked && file.startsWith(QStringLiteral("**")); }
};

struct Written
{
    mode_t mode = 0;
    uid_t owner = 0;
};

class WrittenFilesTest : public ::testing::Test
{
protected:
    WrittenFilesTest()
        : umask_(::umask(022))
        , environment_(home_.environment(bus_.address()))
        , configBefore_(qgetenv("XDG_CONFIG_HOME"))
    {
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home_.configFolder()));
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(home_.runtimeFolder()));
        QDir().mkpath(target());
        put(domainPath(), domain);
        QFile::setPermissions(domainPath(), QFile::ReadOwner | QFile::WriteOwner);
        for (const QString &folder : {cache(), home_.dataFolder() + QStringLiteral("/dolphin"),
                                      home_.dataFolder() + QStringLiteral("/nautilus"),
                                      home_.configFolder() + QStringLiteral("/nemo"),
                                      home_.configFolder() + QStringLiteral("/Thunar"),
                                      home_.configFolder() + QStringLiteral("/pcmanfm-qt"),
                                      home_.configFolder() + QStringLiteral("/caja")})
            QDir().mkpath(folder);
        QDirIterator walk(home_.path(), QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext())
            foldersBefore_.insert(walk.next());
    }
    ~WrittenFilesTest() override
    {
        qputenv("XDG_CONFIG_HOME", configBefore_);
        qunsetenv("XDG_RUNTIME_DIR");
        ::umask(umask_);
    }

    QString target() const { return home_.filePath(QStringLiteral("target")); }
    QString domainPath() const
    {
        return home_.configFolder() + QStringLiteral("/" QUENBY_IDENTIFIER ".plist");
    }
    QString scripts() const { return home_.dataFolder() + QStringLiteral("/Quenby/Scripts"); }
    static void put(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    /// Notes what is there now, folders with a slash at the end; nothing may be being written there.
    QString cache() const { return home_.path() + QStringLiteral("/.cache"); }
    void look() { lookInto(home_.path()); }
    void lookInto(const QString &folder)
    {
        QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString path = walk.next();
            struct stat information = {};
            // Where the system's list of fonts is out of date, the library for fonts makes one here.
            if (path.startsWith(target() + u'/') ||
                path.startsWith(cache() + QStringLiteral("/fontconfig")) || foldersBefore_.contains(path) ||
                ::lstat(QFile::encodeName(path).constData(), &information) != 0)
                continue;
            written_.insert(S_ISDIR(information.st_mode) ? path + u'/' : path,
                            {information.st_mode & 07777, information.st_uid});
        }
    }

    /// Opens the pane, and closes it.
    void runHost()
    {
        ChildProcess host(QStringLiteral(QUENBY_PREFERENCES), {QStringLiteral(QUENBY_BUNDLE)}, environment_);
        const QDir runtime(home_.runtimeFolder());
        ASSERT_TRUE(waitUntil([&] {
            return QDir(scripts()).exists() &&
                   !runtime.entryList({QStringLiteral("*.socket")}, QDir::System).isEmpty();
        })) << host.errors().constData();
        lookInto(home_.runtimeFolder());
        host.signal(SIGTERM);
        ASSERT_TRUE(host.waitForEnd());
        EXPECT_TRUE(host.hasReturned(0)) << host.errors().constData();
        look();
    }
    void run(const QString &program, const QStringList &arguments)
    {
        ChildProcess process(program, arguments, environment_);
        ASSERT_TRUE(process.waitForEnd(1min));
        EXPECT_TRUE(process.hasReturned(0)) << process.errors().constData();
    }
    QStringList creation(const QString &option) const
    {
        return {QStringLiteral("--create"), QStringLiteral("One"), QStringLiteral("--in"), target(), option};
    }
    /// Has the helper run, and do something.
    void runHelper()
    {
        ChildProcess helper(helperProgram, {}, environment_);
        ASSERT_TRUE(waitUntil([&] { return helper.errors().contains("presets in the menu"); }, 1min));
        // It is on the bus a moment later; until then who is asked creates by himself.
        const QString folders = home_.stateFolder() + QStringLiteral("/Quenby/RecentFolders.plist");
        ASSERT_TRUE(waitUntil([&] {
            run(helperProgram, creation(QStringLiteral("--notify")));
            return waitUntil([&] { return QFile::exists(folders); }, 500ms);
        }));
        helper.signal(SIGTERM);
        ASSERT_TRUE(helper.waitForEnd(1min));
        look();
    }

    /// Creates, and looks while the script runs.
    void runScript()
    {
        put(scripts() + QStringLiteral("/mine.sh"), "#!/bin/sh\n: >\"$1/started\"\nread -r go <\"$1/go\"\n");
        ASSERT_EQ(::chmod(QFile::encodeName(scripts() + QStringLiteral("/mine.sh")).constData(), 0755), 0);
        const QString go = target() + QStringLiteral("/go");
        ASSERT_EQ(::mkfifo(QFile::encodeName(go).constData(), 0600), 0);
        ChildProcess process(helperProgram, creation(QStringLiteral("--allow-script")), environment_);
        ASSERT_TRUE(waitUntil([this] { return QFile::exists(target() + QStringLiteral("/started")); }, 1min))
            << process.errors().constData();
        look();
        put(go, "go\n");
        ASSERT_TRUE(process.waitForEnd(1min));
        EXPECT_TRUE(process.hasReturned(0)) << process.errors().constData();
        put(scripts() + QStringLiteral("/mine.sh"), "#!/bin/sh\nexit 0\n");
    }

    /// What the programs leave only when they are ended by force, or at a user's wish.
    void writeTheRest()
    {
        const QString state = home_.stateFolder() + QStringLiteral("/Quenby");
        ASSERT_TRUE(History(state).beginUndo());
        const auto journal = Journals(state).begin({QStringLiteral("id"), {}, 0, false, {}});
        ASSERT_TRUE(journal) << qPrintable(journal.error);
        QNBRecoveryFile recovery(state + QStringLiteral("/Recovery"));
        recovery.write({});
        recovery.finish();
        QString name;
        ASSERT_TRUE(QNBPresetFile::write(QNBPresetRecord(), home_.path(), &name));
        const std::optional<SharedFileList> loginItems = SharedFileList::create();
        ASSERT_TRUE(loginItems);
        const QString odd = home_.filePath(QStringLiteral("odd\nname"));
        ASSERT_TRUE(QFile::link(bundleCode, odd));
        for (const QString &folder : {bundleCode, odd + u'/'})
            ASSERT_TRUE(
                loginItems->insertItemURL(QUrl::fromLocalFile(folder + QStringLiteral("QNBHelper.app"))));
        ASSERT_TRUE(QFile::remove(odd));
        look();
    }

    /// The rows of the table, for this home.
    QList<Row> table() const
    {
        static const QRegularExpression rowPattern(QStringLiteral("^\\| `([^`]+)`( †)? \\| ([^|]*) \\|"),
                                                   QRegularExpression::MultilineOption);
        static const QRegularExpression octal(QStringLiteral("\\b0[0-7]{3}\\b"));
        QList<Row> rows;
        const QString text =
            QString::fromUtf8(contentOf(QStringLiteral(QUENBY_SOURCE_TREE "/Documentation/files.md")));
        auto matches = rowPattern.globalMatch(text);
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            Row row{match.captured(1), patternOf(match.captured(1)), {}, !match.captured(2).isEmpty()};
            auto modes = octal.globalMatch(match.captured(3));
            while (modes.hasNext())
                row.modes.insert(modes.next().captured().toUInt(nullptr, 8));
            rows.append(row);
        }
        return rows;
    }

    TemporaryHome home_;
    PrivateBus bus_;
    QMap<QString, Written> written_;

private:
    QRegularExpression patternOf(const QString &file) const
    {
        QString path = file;
        path.replace(QStringLiteral("$XDG_CONFIG_HOME"), home_.configFolder())
            .replace(QStringLiteral("$XDG_DATA_HOME"), home_.dataFolder())
            .replace(QStringLiteral("$XDG_STATE_HOME"), home_.stateFolder())
            .replace(QStringLiteral("$XDG_RUNTIME_DIR"), home_.runtimeFolder())
            .replace(QStringLiteral("~/"), home_.path() + u'/');
        QString pattern = QRegularExpression::escape(path);
        pattern.replace(QStringLiteral("\\*\\*"), QStringLiteral(".+"))
            .replace(QStringLiteral("\\*"), QStringLiteral("[^/]*"));
        return QRegularExpression(QRegularExpression::anchoredPattern(pattern));
    }

    const mode_t umask_;
    const QProcessEnvironment environment_;
    const QByteArray configBefore_;
    QSet<QString> foldersBefore_;
};

} // namespace

TEST_F(WrittenFilesTest, TheTableNamesEachFileWithItsModeAndNoneThatNobodyWrites)
{
    ASSERT_NO_FATAL_FAILURE(runHost());
    ASSERT_NO_FATAL_FAILURE(runScript());
    ASSERT_NO_FATAL_FAILURE(run(menuProgram, {QStringLiteral("register"), helperProgram}));
    look();
    ASSERT_NO_FATAL_FAILURE(runHelper());
    ASSERT_NO_FATAL_FAILURE(writeTheRest());
    put(domainPath(), "no property list");
    ASSERT_NO_FATAL_FAILURE(runHost());

    QList<Row> rows = table();
    ASSERT_GE(rows.size(), 40);
    for (auto file = written_.constBegin(); file != written_.constEnd(); ++file) {
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const Row &one) {
            return !one.isAnything() && one.isFolder() == file.key().endsWith(u'/') &&
                   one.pattern.match(file.key()).hasMatch();
        });
        if (row == rows.end()) {
            ADD_FAILURE() << qPrintable(file.key()) << " with mode " << std::oct << file->mode
                          << " is not in Documentation/files.md";
            continue;
        }
        row->found.insert(file->mode);
        EXPECT_TRUE(row->modes.contains(file->mode))
            << qPrintable(file.key()) << " has mode " << std::oct << file->mode;
        EXPECT_EQ(file->owner, ::geteuid()) << qPrintable(file.key());
    }
    for (const Row &row : std::as_const(rows))
        EXPECT_TRUE(row.isMarked || row.found == row.modes)
            << qPrintable(row.file) << " was not written, or not with each of its modes";
}
