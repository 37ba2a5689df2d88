// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HelperObject.h"

#include "Helper/HelperService.h"
#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QSemaphore>

#include <atomic>
#include <gtest/gtest.h>
#include <optional>

namespace {

const QString servingName = QStringLiteral("serving");
const QString askingName = QStringLiteral("asking");
const QString preset = QStringLiteral("Letters");
const QString refused = QStringLiteral("/refused");
const QString givenToken = QStringLiteral("token");
constexpr int position = 2;

using Orders = Result<QList<CreationOrder>>;

class HelperObjectTest : public ::testing::Test
{
protected:
    HelperObjectTest()
        : serving_(QDBusConnection::connectToBus(bus_.address(), servingName))
        , asking_(QDBusConnection::connectToBus(bus_.address(), askingName))
    {
    }
    ~HelperObjectTest() override
    {
        QDBusConnection::disconnectFromBus(servingName);
        QDBusConnection::disconnectFromBus(askingName);
    }

    QDBusPendingCall ask(const QString &method, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(serving_.baseService(), HelperService::path,
                                                              HelperService::interfaceName, method);
        message.setArguments(arguments);
        return asking_.asyncCall(message);
    }
    QDBusPendingCall ask(const QStringList &folders)
    {
        return ask(HelperService::createMethod, {preset, position, folders});
    }
    QDBusPendingCall askForLauncher(const QStringList &folders, const QString &token = {})
    {
        return ask(HelperService::showLauncherMethod, {folders, token});
    }
    /// For an object that knows one preset and refuses "/refused", and appends what is opened to \a opened:
    /// the labels, the folders and the token.
    static HelperObject::Handlers launcherHandlers(QList<QStringList> &opened)
    {
        return {.understand = [](const HelperService::Preset &,
                                 const QStringList &) { return Orders::failure(preset); },
                .give = [](const QList<CreationOrder> &) { return true; },
                .contentFor =
                    [](const QStringList &folders) {
                        using Content = Result<Launcher::Content>;
                        return folders.contains(refused)
                                   ? Content::failure(preset)
                                   : Content(Launcher::Content{.labels = {preset}, .named = folders});
                    },
                .openLauncher =
                    [&opened](const Launcher::Content &content, const QByteArray &token) {
                        opened.append(content.labels + content.named + QStringList(QString::fromUtf8(token)));
                    }};
    }
    /// The error; none for the answer of one that is content.
    QDBusError answerTo(const QStringList &folders) { return answerTo(ask(folders)); }
    static QDBusError answerTo(const QDBusPendingCall &call)
    {
        EXPECT_TRUE(waitUntil([&] { return call.isFinished(); }));
        return call.error();
    }
    static Orders ordersFor(const QStringList &folders)
    {
        QList<CreationOrder> orders;
        for (const QString &folder : folders)
            orders.append({0, preset, folder});
        return orders;
    }

    const PrivateBus bus_;
    QDBusConnection serving_;
    QDBusConnection asking_;
};

} // namespace

TEST_F(HelperObjectTest, AnOrderIsUnderstoodAndGiven)
{
    QStringList given;
    const HelperObject object(serving_,
                              {.understand =
                                   [](const HelperService::Preset &asked, const QStringList &folders) {
                                       return asked.label == preset && asked.position == position
                                                  ? ordersFor(folders)
                                                  : Orders::failure(asked.label);
                                   },
                               .give =
                                   [&](const QList<CreationOrder> &orders) {
                                       for (const CreationOrder &order : orders)
                                           given.append(order.label + u' ' + order.folder);
                                       return true;
                                   }});
    EXPECT_FALSE(answerTo({QStringLiteral("/a"), QStringLiteral("/b")}).isValid());
    EXPECT_EQ(given, QStringList({QStringLiteral("Letters /a"), QStringLiteral("Letters /b")}));
}

TEST_F(HelperObjectTest, WhatMakesNoSenseIsRefusedWithTheReason)
{
    const HelperObject object(serving_,
                              {.understand = [](const HelperService::Preset &,
                                                const QStringList &) { return Orders::failure(preset); },
                               .give = [](const QList<CreationOrder> &) { return true; }});
    const QDBusError error = answerTo(QStringList());
    EXPECT_EQ(error.type(), QDBusError::InvalidArgs);
    EXPECT_EQ(error.message(), preset);
}

TEST_F(HelperObjectTest, AnOrderOfTheFirstVersionHasNoPosition)
{
    std::optional<int> asked = position;
    const HelperObject object(serving_,
                              {.understand =
                                   [&](const HelperService::Preset &named, const QStringList &folders) {
                                       asked = named.position;
                                       return ordersFor(folders);
                                   },
                               .give = [](const QList<CreationOrder> &) { return true; }});
    const QStringList folders = {QStringLiteral("/a")};
    EXPECT_FALSE(answerTo(ask(HelperService::createMethod, {preset, folders})).isValid());
    EXPECT_EQ(asked, std::nullopt);
}

TEST_F(HelperObjectTest, TheLauncherIsOpenedForTheFoldersOrRefusedWithTheReason)
{
    QList<QStringList> opened;
    const HelperObject object(serving_, launcherHandlers(opened));
    const QStringList folders = {QStringLiteral("/a"), QStringLiteral("/b")};
    EXPECT_FALSE(answerTo(askForLauncher(folders, givenToken)).isValid());
    EXPECT_TRUE(waitUntil([&] { return opened.size() == 1; }));
    EXPECT_EQ(opened.constLast(), QStringList(preset) + folders + QStringList(givenToken));
    // What older command lines call.
    EXPECT_FALSE(answerTo(ask(QStringLiteral("ShowMenu"), {folders})).isValid());
    EXPECT_TRUE(waitUntil([&] { return opened.size() == 2; }));
    EXPECT_EQ(opened.constLast(), QStringList(preset) + folders + QStringList(QString()));
    const QDBusError error = answerTo(askForLauncher({refused}));
    EXPECT_EQ(error.type(), QDBusError::InvalidArgs);
    EXPECT_EQ(error.message(), preset);
}

TEST_F(HelperObjectTest, ATokenThatIsNoneIsNotUsed)
{
    QList<QStringList> opened;
    const HelperObject object(serving_, launcherHandlers(opened));
    EXPECT_FALSE(answerTo(askForLauncher({}, givenToken.repeated(1000))).isValid());
    EXPECT_TRUE(waitUntil([&] { return !opened.isEmpty(); }));
    EXPECT_EQ(opened, QList({QStringList({preset, QString()})}));
}

TEST_F(HelperObjectTest, OfLaunchersThatWaitToBeOpenedTheLatestIs)
{
    QList<QStringList> opened;
    const HelperObject object(serving_, launcherHandlers(opened));
    const auto askAndWait = [this](const QString &folder) {
        // Nothing else is done on this thread meanwhile.
        QDBusPendingCall call = askForLauncher({folder});
        call.waitForFinished();
        EXPECT_FALSE(call.isError());
    };
    askAndWait(QStringLiteral("/a"));
    askAndWait(QStringLiteral("/b"));
    EXPECT_TRUE(waitUntil([&] { return !opened.isEmpty(); }));
    EXPECT_FALSE(answerTo(askForLauncher({QStringLiteral("/c")})).isValid());
    EXPECT_TRUE(waitUntil([&] { return opened.size() > 1; }));
    EXPECT_EQ(opened, QList({QStringList({preset, QStringLiteral("/b"), QString()}),
                             QStringList({preset, QStringLiteral("/c"), QString()})}));
}

TEST_F(HelperObjectTest, MoreFoldersThanMayWaitAreNotLookedAt)
{
    bool isAsked = false;
    const HelperObject object(serving_, {.understand =
                                             [&isAsked](const HelperService::Preset &, const QStringList &) {
                                                 isAsked = true;
                                                 return Orders::failure(preset);
                                             },
                                         .give = [](const QList<CreationOrder> &) { return true; },
                                         .contentFor =
                                             [&isAsked](const QStringList &) {
                                                 isAsked = true;
                                                 return Result<Launcher::Content>::failure(preset);
                                             }});
    const QStringList folders(CreationWorker::mostWaiting + 1, QStringLiteral("/a"));
    EXPECT_EQ(answerTo(folders).type(), QDBusError::LimitsExceeded);
    EXPECT_EQ(answerTo(askForLauncher(folders)).type(), QDBusError::LimitsExceeded);
    EXPECT_FALSE(isAsked);
}

TEST_F(HelperObjectTest, WhatIsTooMuchIsRefusedAsThat)
{
    const HelperObject object(serving_,
                              {.understand = [](const HelperService::Preset &,
                                                const QStringList &folders) { return ordersFor(folders); },
                               .give = [](const QList<CreationOrder> &) { return false; }});
    EXPECT_EQ(answerTo({QStringLiteral("/a")}).type(), QDBusError::LimitsExceeded);
}

TEST_F(HelperObjectTest, WhileAnOrderIsBeingUnderstoodTheMainThreadGoesOn)
{
    std::atomic<bool> isBusy = false;
    QSemaphore mayGoOn;
    const HelperObject object(serving_, {.understand =
                                             [&](const HelperService::Preset &, const QStringList &folders) {
                                                 isBusy = true;
                                                 constexpr int longTime = 10'000;
                                                 mayGoOn.tryAcquire(1, longTime);
                                                 isBusy = false;
                                                 return ordersFor(folders);
                                             },
                                         .give = [](const QList<CreationOrder> &) { return true; }});
    const QDBusPendingCall call = ask({QStringLiteral("/a")});
    EXPECT_TRUE(waitUntil([&] { return isBusy.load(); }));
    EXPECT_FALSE(call.isFinished());
    mayGoOn.release();
    EXPECT_TRUE(waitUntil([&] { return call.isFinished(); }));
    EXPECT_FALSE(call.isError());
}
