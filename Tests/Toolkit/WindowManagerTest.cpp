// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// With a real screen, a real window manager and windows of other programs.

#include "Toolkit/WindowManager.h"

#include "Tests/Session/DisplayVariable.h"
#include "Tests/Session/VirtualScreen.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <gtest/gtest.h>
#include <unistd.h>

using WindowManager::Windows;

namespace {

const QString alpha = QStringLiteral("alpha");
const QString beta = QStringLiteral("beta");
const QString gamma_ = QStringLiteral("gamma");

/// One program with the windows alpha and beta, another with gamma; alpha is at the bottom, gamma active.
class WindowManagerTest : public ::testing::Test
{
protected:
    WindowManagerTest()
    {
        const QProcessEnvironment environment = screen.environmentFrom(home.environment());
        const QString program = QStringLiteral(QUENBY_WINDOWS);
        two = std::make_unique<ChildProcess>(program, QStringList{alpha, beta}, environment);
        one = std::make_unique<ChildProcess>(program, QStringList{gamma_}, environment);
        for (const QString &title : {alpha, beta, gamma_}) {
            windows[title] = screen.windowNamed(title);
            EXPECT_TRUE(screen.activate(windows[title])) << qPrintable(title);
        }
        EXPECT_EQ(stacking(), QStringList({alpha, beta, gamma_}));
    }

    pid_t ofTwo() const { return pid_t(two->pid()); }
    pid_t ofOne() const { return pid_t(one->pid()); }

    /// The titles, from the bottom to the top.
    QStringList stacking() const
    {
        const QString said = QString::fromLatin1(screen.ask(
            QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST_STACKING")}));
        static const QRegularExpression id(QStringLiteral("0x[0-9a-f]+"));
        QStringList titles;
        auto found = id.globalMatch(said);
        while (found.hasNext())
            titles.append(windows.key(QString::number(found.next().captured().toUInt(nullptr, 16))));
        return titles;
    }
    bool becomes(const QString &active, const QStringList &stacked) const
    {
        return waitUntil([&] { return screen.activeWindow() == windows[active] && stacking() == stacked; });
    }

    void setProperty(const QString &title, const QString &name, const QString &format,
                     const QString &value) const
    {
        screen.ask(QStringLiteral("xprop"), {QStringLiteral("-id"), windows[title], QStringLiteral("-f"),
                                             name, format, QStringLiteral("-set"), name, value});
    }
    void removeProperty(const QString &title, const QString &name) const
    {
        screen.ask(QStringLiteral("xprop"),
                   {QStringLiteral("-id"), windows[title], QStringLiteral("-remove"), name});
    }

    const TemporaryHome home;
    VirtualScreen screen{home};
    const DisplayVariable display{screen.display()};
    std::unique_ptr<ChildProcess> two;
    std::unique_ptr<ChildProcess> one;
    QMap<QString, QString> windows;
};

void expectNothing()
{
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(WindowManager::activeProcess());
    EXPECT_FALSE(WindowManager::activateProcess(::getpid(), Windows::All));
    EXPECT_FALSE(WindowManager::activateProcess(::getpid(), Windows::Front));
    EXPECT_FALSE(WindowManager::activateWindow(1));
    EXPECT_LT(timer.elapsed(), 1000);
}

} // namespace

TEST(WindowManagerWithoutScreenTest, NothingIsFoundOrDoneAtOnce)
{
    for (const QString &name : {QString(), QStringLiteral(":98765"), QStringLiteral("no display")}) {
        const DisplayVariable display(name);
        expectNothing();
    }
}

TEST_F(WindowManagerTest, TheActiveWindowTellsTheProcess)
{
    EXPECT_EQ(WindowManager::activeProcess(), ofOne());
    ASSERT_TRUE(screen.activate(windows[alpha]));
    EXPECT_EQ(WindowManager::activeProcess(), ofTwo());
}

TEST_F(WindowManagerTest, AllWindowsAreRaisedInTheirOrder)
{
    EXPECT_TRUE(WindowManager::activateProcess(ofTwo(), Windows::All));
    EXPECT_TRUE(becomes(beta, {gamma_, alpha, beta}));
    EXPECT_EQ(WindowManager::activeProcess(), ofTwo());
}

TEST_F(WindowManagerTest, TheFrontWindowIsRaisedAlone)
{
    EXPECT_TRUE(WindowManager::activateProcess(ofTwo(), Windows::Front));
    EXPECT_TRUE(becomes(beta, {alpha, gamma_, beta}));
}

TEST_F(WindowManagerTest, OneWindowIsRaisedAlone)
{
    EXPECT_TRUE(WindowManager::activateWindow(windows[alpha].toUInt()));
    EXPECT_TRUE(becomes(alpha, {beta, gamma_, alpha}));
}

TEST_F(WindowManagerTest, AProcessWithoutWindowsIsNotActivated)
{
    EXPECT_FALSE(WindowManager::activateProcess(::getpid(), Windows::All));
    EXPECT_FALSE(WindowManager::activateProcess(0, Windows::All));
    EXPECT_FALSE(WindowManager::activateProcess(-1, Windows::All));
    EXPECT_TRUE(becomes(gamma_, {alpha, beta, gamma_}));
}

TEST_F(WindowManagerTest, WindowsOfOtherMachinesAreNotBelieved)
{
    const QString machine = QStringLiteral("WM_CLIENT_MACHINE");
    setProperty(gamma_, machine, QStringLiteral("8s"), QStringLiteral("elsewhere.example"));
    EXPECT_FALSE(WindowManager::activeProcess());
    EXPECT_FALSE(WindowManager::activateProcess(ofOne(), Windows::All));
    removeProperty(gamma_, machine);
    EXPECT_FALSE(WindowManager::activeProcess());
}

TEST_F(WindowManagerTest, WindowsThatSayNothingSensibleAreOfNoProcess)
{
    const QString property = QStringLiteral("_NET_WM_PID");
    removeProperty(gamma_, property);
    EXPECT_FALSE(WindowManager::activeProcess());
    for (const QString &value : {QStringLiteral("0"), QStringLiteral("4294967295")}) {
        setProperty(gamma_, property, QStringLiteral("32c"), value);
        EXPECT_FALSE(WindowManager::activeProcess()) << qPrintable(value);
    }
    setProperty(gamma_, property, QStringLiteral("8s"), QStringLiteral("12345678"));
    EXPECT_FALSE(WindowManager::activeProcess());
    EXPECT_FALSE(WindowManager::activateProcess(ofOne(), Windows::All));
}

TEST_F(WindowManagerTest, WithoutAWindowManagerNothingIsFoundOrDone)
{
    screen.killWindowManager();
    EXPECT_FALSE(WindowManager::activeProcess());
    EXPECT_FALSE(WindowManager::activateProcess(ofTwo(), Windows::All));
    expectNothing();
}

TEST_F(WindowManagerTest, WhenTheScreenIsGoneNothingIsFoundOrDone)
{
    screen.kill();
    expectNothing();
}
