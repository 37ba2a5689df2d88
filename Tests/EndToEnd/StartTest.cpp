// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/DomainFile.h"
#include "Tests/EndToEnd/PaneCopy.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/TemporaryHome.h"
#include "Tests/Session/VirtualScreen.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>
#include <memory>

using namespace std::chrono_literals;

namespace {

/// What a program has asked of the system until its window was painted.
struct Start
{
    /// The paths of what it has opened, as often as it has, without the names of other processes.
    QStringList opened;
    /// Method calls and signals for the session bus.
    int messages = 0;
    /// The same until the program has ended.
    int allMessages = 0;
    bool isPainted = false;

    QSet<QString> libraries() const
    {
        static const QRegularExpression library(QStringLiteral("/[^/]+\\.so[.0-9]*$"));
        const QStringList found = opened.filter(library);
        return {found.begin(), found.end()};
    }
    int timesOpened(const QString &path) const { return int(opened.count(path)); }
};

Start read(const QByteArray &trace)
{
    static const QRegularExpression open(QStringLiteral("open(?:at)?\\([^\"]*\"([^\"]+)\""));
    // How a message begins: the order of its bytes, its kind, its flags, the version, which is written in
    // three digits where the length that follows looks like one more.
    static const QRegularExpression message(
        QStringLiteral("send(?:to|msg)\\(.*[lB]\\\\[14]\\\\[0-7]\\\\(?:1(?![0-7])|001)"));
    Start start;
    for (const QByteArray &bytes : trace.split('\n')) {
        const QString line = QString::fromUtf8(bytes);
        start.isPainted = start.isPainted || line.contains(u"first-paint-ns");
        const bool isMessage = message.match(line).hasMatch();
        start.allMessages += isMessage;
        if (start.isPainted)
            continue;
        start.messages += isMessage;
        const QRegularExpressionMatch match = open.match(line);
        if (match.hasMatch() && !match.captured(1).endsWith(u"/comm"))
            start.opened.append(match.captured(1));
    }
    return start;
}

enum class Display { None, X11 };

/// The real program with the pane, beside an empty window, on a desktop with a bus and with a home in which
/// both have been before.
class StartTest : public ::testing::TestWithParam<Display>
{
protected:
    StartTest()
        : pane_(home_.path())
    {
        if (GetParam() == Display::X11)
            screen_ = std::make_unique<VirtualScreen>(home_);
    }

    void SetUp() override
    {
        ASSERT_TRUE(DomainFile(home_.configFolder()).write(DomainFile::Form::Binary));
        startOf(QStringLiteral(QUENBY_PREFERENCES), {pane_.path()});
        empty_ = startOf(QStringLiteral(QUENBY_EMPTY_WINDOW), {});
        host_ = startOf(QStringLiteral(QUENBY_PREFERENCES), {pane_.path()});
        ASSERT_TRUE(empty_.isPainted);
        ASSERT_TRUE(host_.isPainted);
    }

    Start startOf(const QString &program, const QStringList &arguments) const
    {
        const QString trace = home_.filePath(QStringLiteral("trace"));
        QProcessEnvironment environment = home_.environment(bus_.address());
        if (screen_)
            environment = screen_->environmentFrom(environment);
        // As at most desks.
        environment.remove(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"));
        environment.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
        // What looks for leaks cannot do so while somebody traces it.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        // Of calls that succeed only: they are written in one line each, whatever other threads do meanwhile.
        ChildProcess process(QStringLiteral("strace"),
                             QStringList{QStringLiteral("-f"), QStringLiteral("-z"), QStringLiteral("-qq"),
                                         QStringLiteral("-o"), trace, QStringLiteral("-e"),
                                         QStringLiteral("trace=open,openat,write,sendmsg,sendto"), program} +
                                 arguments,
                             environment);
        EXPECT_TRUE(process.waitForEnd(60s));
        EXPECT_TRUE(process.hasReturned(0)) << process.errors().constData();
        QFile file(trace);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return read(file.readAll());
    }

    /// What the host opens more often than the empty window, without the processes that it looks at.
    QStringList more() const
    {
        QStringList rest = host_.opened.filter(QRegularExpression(QStringLiteral("^/(?!proc$)")));
        for (const QString &path : empty_.opened)
            rest.removeOne(path);
        return rest;
    }

    const TemporaryHome home_;
    const PaneCopy pane_;
    const PrivateBus bus_;
    std::unique_ptr<VirtualScreen> screen_;
    Start empty_;
    Start host_;
};

/// That it was never done would only say that it was not seen.
void expectAtMost(int limit, int times)
{
    EXPECT_GT(times, 0);
    EXPECT_LE(times, limit);
}

std::string listed(const QStringList &paths)
{
    return paths.join(u'\n').toStdString();
}

} // namespace

TEST_P(StartTest, NoMoreIsOpenedBeforeTheWindowIsPainted)
{
    EXPECT_LE(more().size(), 26) << listed(more());
    // The bus may answer before that, too: then it is looked whether the helper has come meanwhile.
    expectAtMost(2, host_.timesOpened(QStringLiteral("/proc")));
    expectAtMost(5, host_.timesOpened(pane_.path() + QStringLiteral("/Contents/Info.plist")));
    // Twice to follow links, once to be read.
    expectAtMost(3, host_.timesOpened(DomainFile(home_.configFolder()).path()));
}

TEST_P(StartTest, NoMoreLibrariesAreLoadedBeforeTheWindowIsPainted)
{
    const QSet<QString> libraries = host_.libraries() - empty_.libraries();
    EXPECT_LE(libraries.size(), 3) << listed(libraries.values());
    // Whoever reads one picture loads every plug-in for pictures that is installed.
    EXPECT_EQ(listed(host_.opened.filter(QStringLiteral("/imageformats/"))), "");
    // Wanted by whoever asks for the identifier of an item.
    EXPECT_EQ(listed(host_.opened.filter(QStringLiteral("/libcrypto.so"))), "");
}

TEST_P(StartTest, NoMoreIsAskedOfTheBusBeforeTheWindowIsPainted)
{
    // With the question what the helper says of its shortcut, if the bus has answered by then.
    EXPECT_LE(host_.messages - empty_.messages, 8);
    // The bus has a thread of its own, which may say its first word after that.
    EXPECT_GT(host_.allMessages, empty_.allMessages);
}

INSTANTIATE_TEST_SUITE_P(Displays, StartTest, ::testing::Values(Display::None, Display::X11),
                         [](const ::testing::TestParamInfo<Display> &display) {
                             return std::string(display.param == Display::X11 ? "X11" : "None");
                         });
