// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/LauncherSession.h"

#include "Helper/Running/BusOrders.h"
#include "Platform/Bus/SessionBus.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

/// The desktop's program for notifications may have to be started first.
constexpr auto notificationTimeout = 10s;

QString translated(const char *text)
{
    return QCoreApplication::translate("LauncherSession", text);
}

bool hasWindows()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(),
                       [](const QWidget *window) { return window->isVisible(); });
}

} // namespace

LauncherSession::LauncherSession(std::shared_ptr<SessionBus> bus)
    : bus_(std::move(bus))
    , creations_(bus_, Creations::Answers::None, [this] { endIfDone(); })
    , settings_([this](const Result<QNBSettings> &settings) { launcher_.setSettings(settings); })
    , notificationCenter_(bus_)
    , launcher_(
          creations_, [this] { settings_.changed(); }, [this] { endIfDone(); })
    , instance_(bus_, HelperService::launcherName)
{
    connect(qApp, &QGuiApplication::lastWindowClosed, this, &LauncherSession::endIfDone);
}

LauncherSession::~LauncherSession() = default;

void LauncherSession::start(const QStringList &folders)
{
    notificationCenter_.addObserver(QNBPresetConfigurationChangedNotification,
                                    [this] { settings_.changed(); });
    bus_->watch(mailbox_.bound<const std::optional<QDBusConnection> &>(
        [this](const std::optional<QDBusConnection> &connection) { busChanged(connection); }));
    creations_.tellOfInterrupted();
    settings_.read();
    launcher_.open(folders);
}

void LauncherSession::busChanged(const std::optional<QDBusConnection> &connection)
{
    object_.reset();
    if (!connection || isQuitting_)
        return;
    object_.emplace(*connection,
                    HelperObject::Handlers{
                        .understand =
                            [](const HelperService::Preset &, const QStringList &) {
                                return Result<QList<CreationOrder>>::failure(
                                    translated("No helper is running"));
                            },
                        .give = [](const QList<CreationOrder> &) { return false; },
                        .contentFor = BusOrders::launcher,
                        .openLauncher = [this](const Launcher::Content &content,
                                               const QByteArray &token) { launcher_.open(content, token); },
                    });
    // Two windows do no harm, if two were opened at once.
    instance_.claimName([] {});
}

void LauncherSession::endIfDone()
{
    const auto isInUse = [this] { return creations_.isBusy() || (!isQuitting_ && hasWindows()); };
    if (isEnding_ || isInUse())
        return;
    if (!isQuitting_) {
        isEnding_ = true;
        // Who calls from now on opens a window of its own: one here would take no keys meanwhile.
        object_.reset();
        // Where nobody shows notifications, what went wrong comes in a window now.
        creations_.notices().flush(notificationTimeout);
        isEnding_ = false;
    }
    // The window may have been opened by one who called before.
    if (!isInUse())
        QCoreApplication::exit();
}

void LauncherSession::quit()
{
    isQuitting_ = true;
    object_.reset();
    launcher_.close();
    creations_.cancelAll();
    if (!creations_.isBusy())
        QCoreApplication::exit();
}

void LauncherSession::leave()
{
    isQuitting_ = true;
    object_.reset();
    bus_->close();
    creations_.leave();
}
