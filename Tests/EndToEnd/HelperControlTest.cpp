// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Bus/SessionBus.h"
#include "Shared/Source/QNBShared.h"
#include "Tests/EndToEnd/HelperFixture.h"
#include "Tests/EndToEnd/HelperProcesses.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <csignal>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

namespace {

const QString runningStatus = QStringLiteral("Status: Quenby is running");
const QString stoppedStatus = QStringLiteral("Status: Quenby is stopped");
const QString startTitle = QStringLiteral("Start");
const QString stopTitle = QStringLiteral("Stop");
const QString launchKey = QStringLiteral("QNBLaunchHelperOnStart");

/// The pane with a helper inside, as the user starts and stops it.
class HelperControlTest : public HelperFixture
{
protected:
    HelperControlTest()
        : report_(session_.home().filePath(QStringLiteral("helper-report")))
    {
        session_.pane().addHelper();
        session_.setVariable(QStringLiteral("QUENBY_HELPER_REPORT"), report_);
    }

    void openGeneralView()
    {
        ASSERT_NO_FATAL_FAILURE(openPane());
        ASSERT_NO_FATAL_FAILURE(goToGeneralTab());
    }
    /// From the tab to the button, and onto it.
    void press(const QString &title)
    {
        ASSERT_NO_FATAL_FAILURE(walkTo(title, {QStringLiteral("alt+g"), QStringLiteral("Tab")}));
        user_.presses(QStringLiteral("space"));
    }
    void expectStatus(const QString &status, const QString &buttonTitle)
    {
        EXPECT_TRUE(
            waitUntil([&] { return pane_.label(status) && !pane_.button(buttonTitle).isEmpty(); }, patience))
            << qPrintable(status);
    }
    /// One that the pane has not started.
    std::unique_ptr<ChildProcess> startHelper()
    {
        const int before = int(helpers().size());
        auto helper = std::make_unique<ChildProcess>(session_.pane().helperProgram(), QStringList(),
                                                     session_.environment());
        EXPECT_TRUE(waitUntil([&] { return helpers().size() == before + 1; }));
        EXPECT_TRUE(waitUntil([&] { return reports().contains(started(helper->pid())); }));
        return helper;
    }

    QList<QByteArray> reports() const
    {
        QFile file(report_);
        QList<QByteArray> lines =
            file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
        lines.removeAll(QByteArray());
        return lines;
    }
    static QByteArray started(qint64 pid) { return QByteArray::number(pid) + " started"; }
    /// Waits until the helper \a pid has found the options, as it tells of them.
    void expectReport(qint64 pid, const QByteArray &options)
    {
        const QByteArray line = QByteArray::number(pid) + ' ' + options;
        EXPECT_TRUE(waitUntil([&] { return reports().contains(line); }, patience))
            << line.constData() << " is not in\n"
            << reports().join('\n').constData();
    }
    /// The files of the session's login items.
    QStringList loginItems()
    {
        const QDir folder(session_.home().configFolder() + QStringLiteral("/autostart"));
        QStringList paths;
        for (const QString &name : folder.entryList(QDir::Files))
            paths.append(folder.filePath(name));
        return paths;
    }

private:
    QString report_;
};

} // namespace

TEST_F(HelperControlTest, AFirstRunStartsTheHelperAndKeepsIt)
{
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    const QList<qint64> running = helpers();
    ASSERT_THAT(running, SizeIs(1));
    EXPECT_TRUE(waitUntil([&] { return reports().contains(started(running.constFirst())); }));
    EXPECT_EQ(QFileInfo(QStringLiteral("/proc/%1/exe").arg(running.constFirst())).symLinkTarget(),
              session_.pane().helperProgram());

    ASSERT_THAT(loginItems(), SizeIs(1));
    ChildProcess validator(QStringLiteral("desktop-file-validate"), loginItems());
    ASSERT_TRUE(validator.waitForEnd());
    EXPECT_TRUE(validator.hasReturned(0)) << validator.output().constData();

    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(launchKey), "bool True");
    EXPECT_EQ(helpers(), running) << "it runs on without the pane";
}

TEST_F(HelperControlTest, StopAndStartAreFollowedAndRemembered)
{
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    ASSERT_NO_FATAL_FAILURE(press(stopTitle));
    expectStatus(stoppedStatus, startTitle);
    EXPECT_THAT(helpers(), IsEmpty());
    EXPECT_THAT(loginItems(), IsEmpty());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(launchKey), "bool False");

    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(stoppedStatus, startTitle);
    EXPECT_THAT(helpers(), IsEmpty());
    ASSERT_NO_FATAL_FAILURE(press(startTitle));
    expectStatus(runningStatus, stopTitle);
    EXPECT_THAT(helpers(), SizeIs(1));
    EXPECT_THAT(loginItems(), SizeIs(1));
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(launchKey), "bool True");
}

TEST_F(HelperControlTest, EveryChangeOfAnOptionReachesTheRunningHelper)
{
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    ASSERT_THAT(helpers(), SizeIs(1));
    const qint64 helper = helpers().constFirst();
    ASSERT_TRUE(waitUntil([&] { return reports().contains(started(helper)); }));

    user_.presses(QStringLiteral("alt+m"));
    expectReport(helper, "menu 0 code 0 flags 0");
    user_.presses(QStringLiteral("alt+m"));
    expectReport(helper, "menu 1 code 0 flags 0");
    // P, with the masks of command and option.
    user_.presses({QStringLiteral("alt+s"), QStringLiteral("space"), QStringLiteral("ctrl+alt+p")});
    expectReport(helper, "menu 1 code 35 flags 1572864");
    // Escape keeps what there was; nothing is told.
    user_.presses({QStringLiteral("space"), QStringLiteral("Escape")});
    user_.presses({QStringLiteral("space"), QStringLiteral("ctrl+shift+F5")});
    expectReport(helper, "menu 1 code 96 flags 1179648");
    user_.presses({QStringLiteral("space"), QStringLiteral("Delete")});
    EXPECT_TRUE(waitUntil([&] { return session_.notifications() == 5; }, patience))
        << session_.notifications();
    EXPECT_TRUE(waitUntil([&] { return reports().size() == 6; }, patience));
    EXPECT_EQ(reports().constLast(), QByteArray::number(helper) + " menu 1 code 0 flags 0");
}

TEST_F(HelperControlTest, ARunningHelperIsNotToggled)
{
    const auto helper = startHelper();
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    EXPECT_THAT(helpers(), ElementsAre(helper->pid()));
    EXPECT_THAT(loginItems(), IsEmpty());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_TRUE(helper->isRunning());
    EXPECT_EQ(session_.domain().value(launchKey), "none") << "nobody has chosen";
}

TEST_F(HelperControlTest, AHelperThatComesOrGoesOnTheBusIsShown)
{
    const auto helper = startHelper();
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    helper->signal(SIGKILL);
    ASSERT_TRUE(helper->waitForEnd());
    SessionBus bus(session_.busAddress());
    const QString daemon = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage request = QDBusMessage::createMethodCall(daemon, QStringLiteral("/org/freedesktop/DBus"),
                                                          daemon, QStringLiteral("RequestName"));
    bus.call(request << QNBHelperServiceName() << 0U, patience, [](const QDBusMessage &) {});
    expectStatus(stoppedStatus, startTitle);
}

TEST_F(HelperControlTest, StopEndsBothOfTwoHelpers)
{
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    const auto second = startHelper();
    ASSERT_THAT(helpers(), SizeIs(2));
    ASSERT_NO_FATAL_FAILURE(press(stopTitle));
    expectStatus(stoppedStatus, startTitle);
    EXPECT_THAT(helpers(), IsEmpty());
    EXPECT_TRUE(second->waitForEnd());
    EXPECT_THAT(loginItems(), IsEmpty());
}

TEST_F(HelperControlTest, AHelperThatStaysIsShownAsRunning)
{
    session_.setVariable(QStringLiteral("QUENBY_HELPER_STAYS"), QStringLiteral("1"));
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(runningStatus, stopTitle);
    const QList<qint64> running = helpers();
    ASSERT_THAT(running, SizeIs(1));
    ASSERT_TRUE(waitUntil([&] { return reports().contains(started(running.constFirst())); }));
    ASSERT_NO_FATAL_FAILURE(press(stopTitle));
    EXPECT_TRUE(waitUntil([&] { return loginItems().isEmpty(); }, patience));
    expectStatus(runningStatus, stopTitle);
    EXPECT_EQ(helpers(), running);
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(launchKey), "bool False");
}

TEST_F(HelperControlTest, WithoutAHelperInThePaneNothingIsStarted)
{
    ASSERT_TRUE(QDir(session_.pane().helperPath()).removeRecursively());
    ASSERT_NO_FATAL_FAILURE(openGeneralView());
    expectStatus(stoppedStatus, startTitle);
    EXPECT_THAT(loginItems(), IsEmpty());
    ASSERT_NO_FATAL_FAILURE(leave());
    EXPECT_EQ(session_.domain().value(launchKey), "none");
}
