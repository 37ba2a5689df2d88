// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/StandInPrograms.h"

#include <QDate>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>

namespace {

const QString supportFolder = QStringLiteral(QUENBY_RESOURCES "/QNB Default AppSupport");
const QString scriptsFolder = supportFolder + QStringLiteral("/Scripts");

QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator walk(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(QDir(folder).relativeFilePath(walk.next()));
    files.sort();
    return files;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

void write(const QString &path, const QByteArray &bytes)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size());
}

/// A folder as it looks when a preset has just been created in it, in a home of its own.
class DefaultAppSupportTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(home_.isValid());
        target_ = home_.filePath(QStringLiteral("Jam & Toast | 50% \\1"));
        ASSERT_TRUE(QDir().mkpath(target_));
    }

    /// The exit code of \a script, called as for a preset: with the target and the label, in the target.
    int run(const QString &script, const QString &target)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), home_.path());
        environment.insert(QStringLiteral("GIT_CEILING_DIRECTORIES"), home_.path());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(target);
        process.start(scriptsFolder + u'/' + script, {target, QStringLiteral("A Preset")});
        EXPECT_TRUE(process.waitForFinished()) << qPrintable(process.errorString());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    int run(const QString &script) { return run(script, target_); }

    QString inTarget(const QString &name) const { return target_ + u'/' + name; }

    QTemporaryDir home_;
    QString target_;
};

const QString fillInTemplates = QStringLiteral("Fill In Templates.sh");
const QString startGitRepository = QStringLiteral("Start Git Repository.sh");
const QString writeContentsList = QStringLiteral("Write Contents List.sh");

} // namespace

TEST_F(DefaultAppSupportTest, ScriptsAreExecutableShellScripts)
{
    const QStringList scripts = filesBelow(scriptsFolder);
    ASSERT_FALSE(scripts.isEmpty());
    for (const QString &script : scripts) {
        const QString path = scriptsFolder + u'/' + script;
        EXPECT_TRUE(QFileInfo(path).isExecutable()) << qPrintable(script) << " is not executable";
        EXPECT_TRUE(contents(path).startsWith("#!/bin/sh\n")) << qPrintable(script);
        EXPECT_EQ(QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-n"), path}), 0)
            << qPrintable(script);
    }
}

TEST_F(DefaultAppSupportTest, EachScriptIsWholeByItself)
{
    const auto filling = [](const QString &script) {
        const QByteArray text = contents(scriptsFolder + u'/' + script);
        const qsizetype start = text.indexOf("\nfill_in() {\n");
        return text.mid(start, text.indexOf("\n}\n", start) - start);
    };
    // What is allowed is what one file says, and it is copied alone: what two do stands in both.
    EXPECT_GT(filling(fillInTemplates).size(), 100);
    EXPECT_EQ(filling(startGitRepository), filling(fillInTemplates));
    EXPECT_EQ(filling(writeContentsList), filling(fillInTemplates));
    for (const QString &script : filesBelow(scriptsFolder)) {
        const QByteArray text = contents(scriptsFolder + u'/' + script);
        EXPECT_FALSE(text.contains("dirname")) << qPrintable(script);
        EXPECT_FALSE(text.contains("${0%")) << qPrintable(script);
    }
}

TEST_F(DefaultAppSupportTest, ScriptsRefuseAFolderThatIsNotThere)
{
    for (const QString &script : filesBelow(scriptsFolder)) {
        QProcess process;
        process.start(scriptsFolder + u'/' + script, {inTarget(QStringLiteral("absent"))});
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_NE(process.exitCode(), 0) << qPrintable(script);
        process.start(scriptsFolder + u'/' + script, QStringList());
        ASSERT_TRUE(process.waitForFinished());
        EXPECT_NE(process.exitCode(), 0) << qPrintable(script);
    }
    EXPECT_FALSE(QFileInfo::exists(inTarget(QStringLiteral("absent"))));
}

TEST_F(DefaultAppSupportTest, NoFileIsHiddenFromTheMenus)
{
    for (const QString &file : filesBelow(supportFolder)) {
        const QString name = QFileInfo(file).fileName();
        EXPECT_FALSE(name.startsWith(u'.') || name.startsWith(u'_')) << qPrintable(file);
        EXPECT_GT(QFileInfo(supportFolder + u'/' + file).size(), 0) << qPrintable(file);
    }
}

TEST_F(DefaultAppSupportTest, TheBundleCarriesEveryFileWithItsPermissions)
{
    const QString copy = QStringLiteral(QUENBY_BUNDLE_RESOURCES "/QNB Default AppSupport");
    EXPECT_EQ(filesBelow(copy), filesBelow(supportFolder))
        << "Resources/CMakeLists.txt lists what the bundle carries; a file that is gone from there goes from "
           "the build folder with a clean build.";
    for (const QString &file : filesBelow(supportFolder)) {
        EXPECT_EQ(contents(copy + u'/' + file), contents(supportFolder + u'/' + file)) << qPrintable(file);
        EXPECT_EQ(QFileInfo(copy + u'/' + file).isExecutable(),
                  QFileInfo(supportFolder + u'/' + file).isExecutable())
            << qPrintable(file);
    }
}

TEST_F(DefaultAppSupportTest, FillInTemplatesFillsFreshDocuments)
{
    const QString document = inTarget(QStringLiteral("Planning/Notes.md"));
    write(document, "# [[PROJECT NAME]]\n[[TODAY]] [[TODAY]] by [[YOUR NAME]].\n[[something else]]\n");
    ASSERT_TRUE(QFile::setPermissions(document, QFile::ReadOwner | QFile::WriteOwner));

    const QByteArray before = QDate::currentDate().toString(Qt::ISODate).toUtf8();
    ASSERT_EQ(run(fillInTemplates), 0);
    const QByteArray after = QDate::currentDate().toString(Qt::ISODate).toUtf8();

    const QList<QByteArray> lines = contents(document).split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], QByteArray("# Jam & Toast | 50% \\1"));
    EXPECT_TRUE(lines[1].startsWith(before + ' ' + before + " by ") ||
                lines[1].startsWith(after + ' ' + after + " by "))
        << lines[1].constData();
    EXPECT_FALSE(lines[1].contains("[["));
    EXPECT_EQ(lines[2], QByteArray("[[something else]]"));
    EXPECT_EQ(QFile::permissions(document) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    EXPECT_EQ(filesBelow(target_), QStringList(QStringLiteral("Planning/Notes.md")));
}

TEST_F(DefaultAppSupportTest, FillInTemplatesLeavesWhatIsNotItsOwn)
{
    const QByteArray blank = "[[PROJECT NAME]]\n";
    const QString old = inTarget(QStringLiteral("old.md"));
    write(old, blank);
    {
        QFile file(old);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-3600),
                                     QFileDevice::FileModificationTime));
    }
    const QString program = inTarget(QStringLiteral("program.c"));
    write(program, blank);
    const QString hidden = inTarget(QStringLiteral(".git/description.txt"));
    write(hidden, blank);
    const QString outside = home_.filePath(QStringLiteral("outside.md"));
    write(outside, blank);
    ASSERT_TRUE(QFile::link(outside, inTarget(QStringLiteral("link.md"))));

    ASSERT_EQ(run(fillInTemplates), 0);
    for (const QString &path : {old, program, hidden, outside})
        EXPECT_EQ(contents(path), blank) << qPrintable(path);
}

TEST_F(DefaultAppSupportTest, StartGitRepositoryMakesOneAndCommitsNothing)
{
    write(inTarget(QStringLiteral("README.md")), "# [[PROJECT NAME]]\n");
    ASSERT_EQ(run(startGitRepository), 0);
    EXPECT_TRUE(QFileInfo(inTarget(QStringLiteral(".git/HEAD"))).isFile());
    EXPECT_FALSE(QFileInfo::exists(inTarget(QStringLiteral(".git/index"))));
    EXPECT_EQ(contents(inTarget(QStringLiteral("README.md"))), QByteArray("# Jam & Toast | 50% \\1\n"));
}

TEST_F(DefaultAppSupportTest, StartGitRepositoryLeavesARepositoryAndAHomeAlone)
{
    ASSERT_EQ(run(startGitRepository), 0);
    const QString inner = inTarget(QStringLiteral("inner"));
    ASSERT_TRUE(QDir().mkpath(inner));
    EXPECT_EQ(run(startGitRepository, inner), 0);
    EXPECT_FALSE(QFileInfo::exists(inner + QStringLiteral("/.git")));

    EXPECT_NE(run(startGitRepository, home_.path()), 0);
    EXPECT_FALSE(QFileInfo::exists(home_.filePath(QStringLiteral(".git"))));
}

TEST_F(DefaultAppSupportTest, WriteContentsListListsTheTreeOnce)
{
    write(inTarget(QStringLiteral("Footage/Day 1/clip.mov")), "x");
    write(inTarget(QStringLiteral("Footage A/clip.mov")), "x");
    ASSERT_EQ(run(writeContentsList), 0);

    const QString list = inTarget(QStringLiteral("Contents.txt"));
    const QByteArray first = contents(list);
    EXPECT_TRUE(first.startsWith("Jam & Toast | 50% \\1\nPreset: A Preset\nDate: ")) << first.constData();
    EXPECT_TRUE(first.endsWith("\n\nFootage\n    Day 1\n        clip.mov\nFootage A\n    clip.mov\n"))
        << first.constData();

    write(list, "mine\n");
    EXPECT_EQ(run(writeContentsList), 0);
    EXPECT_EQ(contents(list), QByteArray("mine\n"));
}

TEST_F(DefaultAppSupportTest, OpenInFileManagerLeavesTheFileManagerToItself)
{
    StandInPrograms programs;
    const QString fileManager = QStringLiteral("xdg-open");
    programs.add(fileManager, "exec sleep 600");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"),
                       programs.folder() + u':' + environment.value(QStringLiteral("PATH")));
    QProcess script;
    script.setProcessEnvironment(environment);
    script.start(scriptsFolder + QStringLiteral("/Open in File Manager.sh"),
                 {target_, QStringLiteral("A Preset")});
    // Until its output has no more writers, too.
    ASSERT_TRUE(script.waitForFinished()) << qPrintable(script.errorString());
    EXPECT_EQ(script.exitCode(), 0) << script.readAllStandardError().constData();

    ASSERT_TRUE(waitUntil([&] { return !programs.processes(fileManager).isEmpty(); }));
    EXPECT_EQ(programs.starts(fileManager), QList<QByteArrayList>({{QFile::encodeName(target_)}}));
    EXPECT_EQ(::kill(pid_t(programs.processes(fileManager).constFirst()), SIGKILL), 0);
}
