// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Helper/Running/RunningFixture.h"

#include "Helper/HelperService.h"
#include "Helper/Running/RecentFolders.h"
#include "Platform/Bus/DistributedNotificationCenter.h"
#include "Platform/Bus/Mailbox.h"
#include "Platform/Bus/SessionBus.h"
#include "Platform/Preferences/Preferences.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>

#include <csignal>
#include <optional>

namespace {

/// In milliseconds; for a machine with much else to do.
constexpr int fixturePatience = 120'000;
const QString fixtureConnection = QStringLiteral("running-fixture");

} // namespace

RunningFixture::RunningFixture()
    : screen_(home_)
{
}

QNBPresetRecordPtr RunningFixture::record(const QVariantMap &stored)
{
    return QNBPresetRecord::fromStored(PropertyListDocument::fromVariant(stored)->root());
}

QNBSettings RunningFixture::settings() const
{
    QNBSettings result;
    result.presets = {record(preset(QStringLiteral("Letters"),
                                    {folder(QStringLiteral("In"), {file(QStringLiteral("a.txt"))})})),
                      record(preset(QStringLiteral("Photos"), {folder(QStringLiteral("Raw"), {})}))};
    return result;
}

void RunningFixture::store(const QNBSettings &settings, const TemporaryHome &home)
{
    Preferences preferences(QStringLiteral(QUENBY_IDENTIFIER),
                            {home.configFolder(), home.runtimeFolder(), nullptr, fixturePatience});
    const Result<> written = QNBSettingsStore::write(preferences, settings);
    ASSERT_TRUE(written) << qPrintable(written.error);
}

void RunningFixture::storeAndPost(const QNBSettings &settings)
{
    store(settings);
    post(QNBPresetConfigurationChangedNotification);
}

void RunningFixture::post(const QString &notification)
{
    DistributedNotificationCenter centre(std::make_shared<SessionBus>(bus_.address()));
    centre.postNotificationName(notification);
    EXPECT_TRUE(centre.flush());
}

void RunningFixture::useTarget()
{
    RecentFolders(home_.stateFolder() + QStringLiteral("/Quenby")).add({target()});
}

QProcessEnvironment RunningFixture::environment() const
{
    return screen_.environmentFrom(home_.environment(bus_.address()));
}

QProcessEnvironment RunningFixture::environmentOf(const TemporaryHome &otherHome) const
{
    return screen_.environmentFrom(otherHome.environment());
}

std::unique_ptr<ChildProcess> RunningFixture::start()
{
    auto helper = startIn(environment());
    EXPECT_TRUE(waitUntil([&] { return isOnBus() || !helper->isRunning(); },
                          std::chrono::milliseconds(fixturePatience)));
    EXPECT_TRUE(helper->isRunning()) << helper->errors().constData();
    return helper;
}

std::unique_ptr<ChildProcess> RunningFixture::startIn(const QProcessEnvironment &environment)
{
    return std::make_unique<ChildProcess>(program(), QStringList(), environment);
}

bool RunningFixture::isOnBus() const
{
    QDBusConnection bus = QDBusConnection::connectToBus(bus_.address(), fixtureConnection);
    // The object comes after the name.
    // It may be asking the tray meanwhile, which is in this process.
    const QDBusPendingCall answer = bus.asyncCall(QDBusMessage::createMethodCall(
        HelperService::name, HelperService::path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
        QStringLiteral("Introspect")));
    waitUntil([&] { return answer.isFinished(); });
    QDBusConnection::disconnectFromBus(fixtureConnection);
    return answer.reply().arguments().value(0).toString().contains(HelperService::createMethod);
}

QNBHelperState RunningFixture::state() const
{
    SessionBus bus(bus_.address());
    std::optional<QNBHelperState> state;
    bool isKnown = false;
    const Mailbox mailbox;
    QNBHelperState::ask(bus, mailbox.bound<const std::optional<QNBHelperState> &>(
                                 [&](const std::optional<QNBHelperState> &answer) {
                                     state = answer;
                                     isKnown = true;
                                 }));
    EXPECT_TRUE(waitUntil([&] { return isKnown; }));
    EXPECT_TRUE(state);
    return state.value_or(QNBHelperState());
}

bool RunningFixture::order(const QString &preset, QString *error)
{
    QString reason;
    SessionBus bus(bus_.address());
    const HelperService::Answer answer =
        HelperService::create(bus, {preset}, {target()}, error ? error : &reason);
    return answer == HelperService::Answer::Taken;
}

void RunningFixture::expectEndOf(ChildProcess &helper)
{
    helper.signal(SIGTERM);
    ASSERT_TRUE(helper.waitForEnd(std::chrono::milliseconds(fixturePatience)));
    EXPECT_TRUE(helper.hasReturned(0)) << helper.errors().constData();
}
