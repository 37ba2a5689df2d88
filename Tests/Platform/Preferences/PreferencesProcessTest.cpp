// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PreferencesFixture.h"

#include <QMap>
#include <QProcess>

#include <functional>
#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString saver = QStringLiteral(QUENBY_TEST_SAVE);
const QString key = QStringLiteral("key");
constexpr int size = 50'000;
constexpr int processPatience = 240'000;
/// Any user but the administrator.
constexpr uid_t otherUser = 65534;

/// One system call of a save: its name and which of the calls of that name it is.
struct SystemCall
{
    QString name;
    int number = 0;
};

class PreferencesProcessTest : public PreferencesFixture
{
protected:
    QStringList arguments(const QString &command, int number = size, const QString &ofKey = key) const
    {
        return {command, folder(), in(QStringLiteral("locks")), ofKey, QString::number(number)};
    }

    static QProcessEnvironment environment()
    {
        QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
        // The leak checker traces the process itself, which another tracer forbids.
        result.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        result.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("quenby.*=false"));
        return result;
    }

    static int run(const QString &program, const QStringList &arguments)
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(processPatience)) << qPrintable(program);
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    int runTraced(const QStringList &options) const
    {
        return run(QStringLiteral("strace"),
                   QStringList{QStringLiteral("-qq"), QStringLiteral("-o"), in(QStringLiteral("trace"))} +
                       options + QStringList{saver} + arguments(QStringLiteral("once")));
    }

    /// What a save starts from: a file with a backup, or a damaged one.
    void prepare(bool damaged)
    {
        for (const QString &name : namesIn(folder()))
            ASSERT_TRUE(QFile::remove(QDir(folder()).filePath(name)));
        put(backup(), contentOfBackup());
        put(file(), damaged ? QByteArray("damaged") : oldContent());
    }
    static QByteArray contentOfBackup() { return listOf({{key, QStringLiteral("older")}, {one, 1LL}}); }
    static QByteArray oldContent() { return listOf({{key, QStringLiteral("old")}, {one, 1LL}}); }

    /// The calls between the two that mark the save, but for those that have nothing to do with its files
    /// (memory, the sanitizers' own).
    QList<SystemCall> callsOfASave(bool damaged)
    {
        prepare(damaged);
        EXPECT_EQ(
            runTraced({QStringLiteral("-y"), QStringLiteral("-e"), QStringLiteral("trace=%file,%desc")}), 0);
        const QByteArray ours = QFile::encodeName(QFileInfo(root()).canonicalFilePath());
        QList<SystemCall> calls;
        QMap<QString, int> numbers;
        bool saving = false;
        for (const QByteArray &line : contentOf(in(QStringLiteral("trace"))).split('\n')) {
            const qsizetype end = line.indexOf('(');
            if (end <= 0)
                continue;
            const QString name = QString::fromLatin1(line.left(end));
            const int number = ++numbers[name];
            if (line.contains("quenby-test-save-ends"))
                break;
            if (saving && line.contains(ours))
                calls.append({name, number});
            saving = saving || line.contains("quenby-test-save-begins");
        }
        return calls;
    }

    /// Runs the save with the call tampered with.
    int runWith(const SystemCall &call, const QString &tampering) const
    {
        return runTraced({QStringLiteral("-e"), QStringLiteral("trace=%1").arg(call.name),
                          QStringLiteral("-e"),
                          QStringLiteral("inject=%1:%2:when=%3").arg(call.name, tampering).arg(call.number)});
    }

    bool holdsNew() const { return onDisk() == QVariantMap{{key, QString(size, u'n')}, {one, 1LL}}; }

    /// Runs \a work in a child as a user whom permissions bind; its exit status is the answer.
    static int asOrdinaryUser(const std::function<bool()> &work)
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const bool ready = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 &&
                                                    ::setgid(otherUser) == 0 && ::setuid(otherUser) == 0);
            ::_exit(!ready ? 2 : work() ? 0 : 1);
        }
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// Lets the ordinary user own everything here.
    void giveAway() const
    {
        if (::geteuid() != 0)
            return;
        for (const QString &path : {root(), folder(), in(QStringLiteral("locks")), file()})
            ASSERT_EQ(::chown(QFile::encodeName(path).constData(), otherUser, otherUser), 0)
                << qPrintable(path);
    }

    static void setMode(const QString &path, mode_t mode)
    {
        ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
    }

    /// True if a save fails as it should: values pending and seen.
    bool saveFails() const
    {
        const auto first = preferences();
        first->setAppValue(two, 2LL);
        return !first->appSynchronize() && first->hasPendingValues() &&
               first->copyAppValue(two) == QVariant(2LL);
    }
};

} // namespace

TEST_F(PreferencesProcessTest, KilledAtEachSystemCallTheFileIsOldOrNew)
{
    for (const bool damaged : {false, true}) {
        const QList<SystemCall> calls = callsOfASave(damaged);
        EXPECT_GT(calls.size(), 15);
        int olds = 0;
        int news = 0;
        for (const SystemCall &call : calls) {
            prepare(damaged);
            EXPECT_NE(runWith(call, QStringLiteral("signal=SIGKILL")), 0) << qPrintable(call.name);
            const std::string where = QStringLiteral("%1 %2").arg(call.name).arg(call.number).toStdString();
            const bool isUntouched = contentOf(file()) == (damaged ? QByteArray("damaged") : oldContent());
            const bool isRepaired = damaged && contentOf(file()) == contentOf(backup());
            EXPECT_TRUE(isUntouched || isRepaired || holdsNew()) << where;
            (isUntouched || isRepaired ? olds : news) += 1;
            // The next start reads the same, repairs what is damaged and clears what was left.
            const QVariant expected = !isUntouched && !isRepaired ? QVariant(QString(size, u'n'))
                                      : damaged                   ? QVariant(QStringLiteral("older"))
                                                                  : QVariant(QStringLiteral("old"));
            EXPECT_EQ(preferences()->copyAppValue(key), expected) << where;
            EXPECT_EQ(onDisk().value(key), expected) << where;
            for (const QString &name : namesIn(folder()))
                EXPECT_FALSE(name.startsWith(u'.')) << where << ' ' << qPrintable(name);
            EXPECT_EQ(asides().size(), damaged ? 1 : 0) << where;
        }
        EXPECT_GT(olds, 5);
        EXPECT_GT(news, 0);
    }
}

TEST_F(PreferencesProcessTest, EachSystemCallRefusedLeavesOldOrNewAndTheNextSaveTriesAgain)
{
    for (const bool damaged : {false, true}) {
        int failures = 0;
        for (const SystemCall &call : callsOfASave(damaged)) {
            const QString error = call.name.contains(QLatin1StringView("write"))
                                      ? QStringLiteral("error=ENOSPC")
                                      : QStringLiteral("error=EIO");
            prepare(damaged);
            const int status = runWith(call, error);
            const std::string where =
                QStringLiteral("%1 %2 %3").arg(call.name).arg(call.number).arg(damaged).toStdString();
            // A first save that failed was followed by one that did not.
            EXPECT_TRUE(status == 0 || status == 1) << where << ' ' << status;
            failures += status == 1 ? 1 : 0;
            EXPECT_EQ(onDisk(), (QVariantMap{{key, QString(size, u'n')}, {one, 1LL}})) << where;
            ASSERT_EQ(asides().size(), damaged ? 1 : 0) << where;
            for (const QString &name : asides())
                EXPECT_EQ(contentOf(QDir(folder()).filePath(name)), QByteArray("damaged")) << where;
            // A copy of the good file, or backup, is kept if it could not be read at first.
            EXPECT_LE(copies().size(), 1) << where;
            for (const QByteArray &copy : copies())
                EXPECT_EQ(copy, damaged ? contentOfBackup() : oldContent()) << where;
        }
        EXPECT_GT(failures, 8);
    }
}

TEST_F(PreferencesProcessTest, AFileThatTheKernelCutsShortLeavesTheOldBytes)
{
    for (const int length : {10, 1'000, 1'000'000}) {
        prepare(false);
        const QByteArray before = contentOf(file());
        EXPECT_EQ(run(saver, arguments(QStringLiteral("limited"), length)), 1) << length;
        EXPECT_EQ(contentOf(file()), before);
        EXPECT_EQ(namesIn(folder()).size(), 2);
    }
}

TEST_F(PreferencesProcessTest, TwoProcessesSavingAtOnceLoseNoUpdate)
{
    constexpr int saves = 1000;
    // In memory where there is such a place: the less a save waits for the disk, the more the two meet.
    const QString memory = QStringLiteral("/dev/shm");
    const QTemporaryDir place(
        QDir(QFileInfo(memory).isWritable() ? memory : root()).filePath(QStringLiteral("quenby-XXXXXX")));
    ASSERT_TRUE(place.isValid());
    QProcess processes[2];
    for (QProcess &process : processes) {
        process.setProcessEnvironment(environment());
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(saver, {QStringLiteral("many"), place.path(), in(QStringLiteral("locks")),
                              &process == processes ? QStringLiteral("a") : QStringLiteral("b"),
                              QString::number(saves)});
    }
    for (QProcess &process : processes) {
        ASSERT_TRUE(process.waitForFinished(processPatience));
        EXPECT_EQ(process.exitCode(), 0);
    }
    const QVariantMap values = valuesOf(contentOf(place.filePath(QStringLiteral("org.example.Test.plist"))));
    EXPECT_EQ(values.size(), 2 * saves);
    for (int i = 0; i < saves; ++i) {
        EXPECT_EQ(values.value(QStringLiteral("a%1").arg(i)), QVariant(qlonglong(i)));
        EXPECT_EQ(values.value(QStringLiteral("b%1").arg(i)), QVariant(qlonglong(i)));
    }
}

TEST_F(PreferencesProcessTest, ADeadHolderOfTheLockDoesNotBlock)
{
    save(one, 1LL);
    prepare(false);
    // Killed when it has the lock and is about to write.
    const QList<SystemCall> calls = callsOfASave(false);
    prepare(false);
    for (const SystemCall &call : calls) {
        if (call.name == QLatin1StringView("fsync")) {
            EXPECT_NE(runWith(call, QStringLiteral("signal=SIGKILL")), 0);
            break;
        }
    }
    save(two, 2LL);
    EXPECT_EQ(onDisk().value(two), QVariant(2LL));
}

TEST_F(PreferencesProcessTest, ReadOnlyFileIsNotReplaced)
{
    prepare(false);
    giveAway();
    setMode(file(), 0400);
    EXPECT_EQ(
        asOrdinaryUser([this] { return saveFails() && preferences()->copyAppValue(one) == QVariant(1LL); }),
        0);
    EXPECT_EQ(contentOf(file()), oldContent());
    EXPECT_EQ(namesIn(folder()).size(), 2);
}

TEST_F(PreferencesProcessTest, UnreadableFileIsNeitherMovedNorReplaced)
{
    prepare(false);
    giveAway();
    setMode(file(), 0);
    EXPECT_EQ(asOrdinaryUser([this] { return saveFails(); }), 0);
    setMode(file(), 0600);
    EXPECT_EQ(contentOf(file()), oldContent());
    EXPECT_EQ(namesIn(folder()).size(), 2);
}

TEST_F(PreferencesProcessTest, ReadOnlyFolderKeepsTheOldBytesDamagedOrNot)
{
    for (const bool damaged : {false, true}) {
        prepare(damaged);
        giveAway();
        const QByteArray before = contentOf(file());
        setMode(folder(), 0500);
        EXPECT_EQ(asOrdinaryUser(
                      [this] { return saveFails() && preferences()->copyAppValue(one) == QVariant(1LL); }),
                  0);
        setMode(folder(), 0700);
        EXPECT_EQ(contentOf(file()), before);
        EXPECT_EQ(namesIn(folder()).size(), 2);
    }
}

TEST_F(PreferencesProcessTest, AFolderThatCannotBeMadeFailsTheSave)
{
    prepare(false);
    giveAway();
    setMode(root(), 0500);
    EXPECT_EQ(asOrdinaryUser([this] {
                  Preferences::Options elsewhere = options();
                  elsewhere.folder = in(QStringLiteral("unwritable/config"));
                  Preferences first(domain, elsewhere);
                  first.setAppValue(one, 1LL);
                  return !first.appSynchronize() && first.copyAppValue(one) == QVariant(1LL);
              }),
              0);
    setMode(root(), 0700);
}

TEST_F(PreferencesProcessTest, AHomeThatIsNoAbsolutePathIsNeverTakenFromTheWorkingFolder)
{
    EXPECT_EQ(asOrdinaryUser([this] {
                  ::qputenv("HOME", "home");
                  ::qputenv("XDG_CONFIG_HOME", "config");
                  (void)::chdir(QFile::encodeName(root()).constData());
                  const QString path = Preferences(domain).path();
                  return path.isEmpty() || (path.startsWith(u'/') && !path.startsWith(root()));
              }),
              0);
    EXPECT_EQ(asOrdinaryUser([this] {
                  ::qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder()));
                  return Preferences(domain).path() == file();
              }),
              0);
}
