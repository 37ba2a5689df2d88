// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The bundle as it is installed: copied into a home, run from there, by a user who is not the administrator
// if there is a choice.

#include "Platform/Desktop/Bundle.h"
#include "Tests/ContextMenu/ExecLine.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/ContextMenu/ThunarFile.h"
#include "Tests/Session/ChildProcess.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <csignal>
#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr uid_t nobody = 65534;
constexpr int timeout = 60000;

class ProgramTest : public MenuHome
{
protected:
    ProgramTest()
    {
        makeFolder(plugin() + QStringLiteral("/Contents/MacOS"));
        for (const char *file : {"/Contents/Info.plist", "/Contents/MacOS/QNBContextMenu"}) {
            const QString name = QString::fromLatin1(file);
            EXPECT_TRUE(QFile::copy(QStringLiteral(QUENBY_CONTEXT_MENU) + name, plugin() + name));
        }
        storePresets({label_});
        haveAllFileManagers();
        put(calledHelper(), "#!/bin/sh\nprintf '%s\\0' \"$(id -u)\" \"$@\" >\"$HOME/called.new\"\n"
                            "mv \"$HOME/called.new\" \"$HOME/called\"\n");
        EXPECT_TRUE(QFile::setPermissions(calledHelper(), QFile::ReadOwner | QFile::ExeOwner));
        EXPECT_TRUE(QFile::link(QStringLiteral("/usr/bin/id"), in(QStringLiteral("bin/id"))));
        giveHomeToUser();
    }

    QString plugin() const
    {
        return in(QStringLiteral("Library/Contextual Menu Items/QNBContextMenu.plugin"));
    }
    QString calledHelper() const { return in(QStringLiteral("helper \"in\" quotes")); }

    static uid_t user() { return ::geteuid() == 0 ? nobody : ::geteuid(); }

    void giveHomeToUser() const
    {
        QStringList paths = {home_.path()};
        QDirIterator walk(home_.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
        while (walk.hasNext())
            paths.append(walk.next());
        for (const QString &path : paths)
            EXPECT_EQ(::lchown(path.toUtf8().constData(), user(), gid_t(-1)), 0);
    }

    struct Result
    {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };

    Result run(const QString &program, const QStringList &arguments,
               const QMap<QString, QString> &variables = {}) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (auto variable = variables.begin(); variable != variables.end(); ++variable)
            environment.insert(variable.key(), variable.value());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(home_.path());
        process.setChildProcessModifier([] {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::geteuid() == 0 &&
                (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0))
                ::_exit(127);
        });
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(timeout)) << qPrintable(process.errorString());
        const bool hasReturned = process.exitStatus() == QProcess::NormalExit;
        return {hasReturned ? process.exitCode() : -1, process.readAllStandardOutput(),
                process.readAllStandardError()};
    }
    Result run(const QStringList &arguments) const
    {
        return run(plugin() + QStringLiteral("/Contents/MacOS/QNBContextMenu"), arguments);
    }

    /// Who was called, with what; waits for it.
    QByteArrayList takeCall() const
    {
        const QString record = in(QStringLiteral("called"));
        EXPECT_TRUE(waitUntil([&] { return QFile::exists(record); }));
        QByteArrayList call = contentOf(record).split('\0');
        EXPECT_TRUE(QFile::remove(record));
        call.removeLast();
        return call;
    }

    /// Has \a program started as by \a who, and expects that the helper is called for \a folder by that.
    void expectCallBy(const char *who, const QString &folder, const QString &program,
                      const QStringList &arguments, const QMap<QString, QString> &variables = {}) const
    {
        SCOPED_TRACE(who);
        const Result result = run(program, arguments, variables);
        EXPECT_EQ(result.code, 0) << result.errors.constData();
        EXPECT_EQ(takeCall(),
                  QByteArrayList{QByteArray::number(user())} + callFor(label_, {folder.toUtf8()}));
    }
    /// What the entry \a path starts, as of an application.
    QString applicationFrom(const QString &path, const QByteArray &group) const
    {
        const std::optional<QByteArray> exec = ExecLine::value(contentOf(path), group, "Exec");
        EXPECT_TRUE(exec) << qPrintable(path);
        const QString application = in(QStringLiteral("start.desktop"));
        put(application,
            "[Desktop Entry]\nType=Application\nName=Start\nExec=" + exec.value_or(QByteArray()) + '\n');
        return application;
    }

    const QString label_ = QStringLiteral("it's a %f $HOME");
    const QString scriptName_ = QStringLiteral("it's a \uFF05f $HOME");
};

} // namespace

TEST_F(ProgramTest, TheBundleSaysWhatItIs)
{
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(QStringLiteral(QUENBY_CONTEXT_MENU));
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->infoDictionary().value(QStringLiteral("CFBundleShortVersionString")).toString(),
              QStringLiteral(QUENBY_VERSION));
    EXPECT_TRUE(QFileInfo(bundle->executablePath()).isExecutable());
    EXPECT_EQ(QFileInfo(bundle->executablePath()).fileName(), QStringLiteral("QNBContextMenu"));
}

TEST_F(ProgramTest, ItTellsAboutItself)
{
    const Result help = run({QStringLiteral("--help")});
    EXPECT_EQ(help.code, 0);
    for (const char *word : {"register", "refresh", "unregister", "HELPER", "Thunar"})
        EXPECT_TRUE(help.output.contains(word)) << word;
    EXPECT_EQ(run({QStringLiteral("--version")}).output, "QNBContextMenu " QUENBY_VERSION "\n");
}

TEST_F(ProgramTest, WrongUseIsRefused)
{
    const auto before = contentOfHome();
    for (const QStringList &arguments :
         {QStringList(), QStringList(QStringLiteral("install")),
          QStringList({QStringLiteral("unregister"), QStringLiteral("/bin/sh")}),
          QStringList({QStringLiteral("register"), QStringLiteral("/bin/sh"), QStringLiteral("/bin/sh")})}) {
        const Result result = run(arguments);
        EXPECT_EQ(result.code, 2);
        EXPECT_TRUE(result.errors.startsWith("Usage:"));
    }
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(ProgramTest, TheHomeOfAnotherUserIsRefused)
{
    const auto before = contentOfHome();
    for (const char *command : {"register", "refresh", "unregister"}) {
        // The folder of root, who does not run the program.
        const Result result =
            run(plugin() + QStringLiteral("/Contents/MacOS/QNBContextMenu"), {QString::fromLatin1(command)},
                {{QStringLiteral("HOME"), QStringLiteral("/")}});
        EXPECT_EQ(result.code, 1) << command;
        EXPECT_TRUE(result.errors.contains("belongs to another user")) << result.errors.constData();
        EXPECT_EQ(result.errors.count('\n'), 1) << result.errors.constData();
    }
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(ProgramTest, RegisteredEntriesWorkForAnOrdinaryUser)
{
    const Result registered = run({QStringLiteral("register"), calledHelper()});
    ASSERT_EQ(registered.code, 0) << registered.errors.constData();
    const QString folder = in(QStringLiteral("a folder"));
    makeFolder(folder);

    const QString address = QStringLiteral("file://") + home_.path() + QStringLiteral("/a%20folder");
    const QString script = QStringLiteral("scripts/Quenby/") + scriptName_;
    expectCallBy("nautilus", folder, data(QStringLiteral("nautilus/") + script), {},
                 {{QStringLiteral("NAUTILUS_SCRIPT_SELECTED_URIS"), address}});
    expectCallBy("nemo", folder, data(QStringLiteral("nemo/") + script), {},
                 {{QStringLiteral("NEMO_SCRIPT_SELECTED_URIS"), address}});
    expectCallBy("caja", folder, config(QStringLiteral("caja/") + script), {},
                 {{QStringLiteral("CAJA_SCRIPT_SELECTED_URIS"), address}});

    const QString serviceMenu = data(QStringLiteral("kio/servicemenus/org.quenby.Quenby.desktop"));
    EXPECT_TRUE(QFileInfo(serviceMenu).isExecutable());
    const QString action = data(QStringLiteral("file-manager/actions/quenby-0001.desktop"));
    const QString launch = QStringLiteral("launch");
    expectCallBy("dolphin", folder, QStringLiteral(QUENBY_GIO),
                 {launch, applicationFrom(serviceMenu, "Desktop Action preset1"), folder});
    expectCallBy("pcmanfm-qt", folder, QStringLiteral(QUENBY_GIO),
                 {launch, applicationFrom(action, "X-Action-Profile folder"), folder});

    const QStringList commands =
        ThunarFile::texts(contentOf(config(QStringLiteral("Thunar/uca.xml"))), QStringLiteral("command"));
    ASSERT_EQ(commands.size(), 2);
    expectCallBy("thunar", folder, QStringLiteral("/bin/sh"),
                 {QStringLiteral("-c"), ThunarFile::commandLine(commands.constFirst(), folder)});
}

TEST_F(ProgramTest, UnregisteredTheHomeIsAsBefore)
{
    const auto before = contentOfHome();
    ASSERT_EQ(run({QStringLiteral("register"), calledHelper()}).code, 0);
    const auto registered = contentOfHome();
    const auto times = timesOfHome();
    EXPECT_NE(registered, before);
    ASSERT_EQ(run({QStringLiteral("refresh"), calledHelper()}).code, 0);
    EXPECT_EQ(contentOfHome(), registered);
    EXPECT_EQ(timesOfHome(), times);
    ASSERT_EQ(run({QStringLiteral("unregister")}).code, 0);
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(ProgramTest, ARelativePathOfTheHelperIsMadeAbsolute)
{
    ASSERT_EQ(run({QStringLiteral("register"), QStringLiteral("./helper \"in\" quotes")}).code, 0);
    EXPECT_TRUE(contentOf(data(QStringLiteral("nautilus/scripts/Quenby/") + scriptName_))
                    .contains("exec '" + calledHelper().toUtf8() + '\''));
}

TEST_F(ProgramTest, TheListSaysWhichFileManagersAreThereAndWhichHaveTheEntries)
{
    const QByteArray without = run({QStringLiteral("list")}).output;
    EXPECT_EQ(without, "Dolphin\tno\nNautilus\tno\nNemo\tno\nThunar\tno\nPCManFM-Qt\tno\nCaja\tno\n");
    ASSERT_EQ(run({QStringLiteral("register"), calledHelper()}).code, 0);
    EXPECT_EQ(run({QStringLiteral("list")}).output, QByteArray(without).replace("\tno", "\tyes"));
    ASSERT_EQ(run({QStringLiteral("unregister")}).code, 0);
    EXPECT_EQ(run({QStringLiteral("list")}).output, without);
}

TEST_F(ProgramTest, WhatIsLeftAloneIsPrinted)
{
    ASSERT_EQ(run({QStringLiteral("register"), calledHelper()}).output, "");
    const QString script = data(QStringLiteral("nemo/scripts/Quenby/") + scriptName_);
    put(script, "mine");
    const Result result = run({QStringLiteral("register"), calledHelper()});
    EXPECT_EQ(result.code, 0) << result.errors.constData();
    EXPECT_TRUE(result.output.contains("nemo/scripts/Quenby/") && result.output.contains("is left alone\n"))
        << result.output.constData();
}

TEST_F(ProgramTest, AFailureIsToldByItsStatus)
{
    put(config(QStringLiteral("Thunar/uca.xml")), "<actions>");
    const Result result = run({QStringLiteral("register"), calledHelper()});
    EXPECT_EQ(result.code, 1);
    EXPECT_TRUE(result.errors.contains("uca.xml")) << result.errors.constData();
}
