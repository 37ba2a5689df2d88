// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HelperSession.h"

#include "Helper/Presets.h"
#include "Helper/Running/BusOrders.h"
#include "Helper/Running/OwnedWindow.h"
#include "Helper/Running/PaneLauncher.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/LineText.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLoggingCategory>
#include <QMenu>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcSession, "quenby.helper.session")

/// Until it is looked again whether nothing is being done.
constexpr auto idlePause = 1000ms;

QString translated(const char *text)
{
    return QCoreApplication::translate("HelperSession", text);
}

} // namespace

HelperSession::HelperSession(std::shared_ptr<SessionBus> bus, SingleInstance &instance)
    : bus_(std::move(bus))
    , instance_(instance)
    , creations_(bus_, Creations::Answers::Offered,
                 [this] {
                     if (isQuitting_)
                         QCoreApplication::exit();
                 })
    , settings_([this](const Result<QNBSettings> &settings) { update(settings); })
    , notificationCenter_(bus_)
    , launcher_(creations_, [this] { settings_.changed(); })
    , hotKeys_(*bus_, {.pressed =
                           [this](const QByteArray &activationToken) {
                               if (!isQuitting_)
                                   launcher_.open(QStringList(), activationToken);
                           },
                       .stateChanged =
                           [this](QNBHelperState::HotKey hotKey, const QString &keys) {
                               state_.hotKey = hotKey;
                               state_.keys = keys;
                               stateChanged();
                           }})
{
}

HelperSession::~HelperSession() = default;

void HelperSession::start()
{
    notificationCenter_.addObserver(QNBPresetConfigurationChangedNotification,
                                    [this] { settings_.changed(); });
    notificationCenter_.addObserver(QNBHotKeyIsBeingRecordedNotification,
                                    [this] { hotKeys_.pause(3 * QNBHotKeyRecordingInterval); });
    notificationCenter_.addObserver(QNBHotKeyRecordingEndedNotification, [this] { hotKeys_.resume(); });
    bus_->watch(mailbox_.bound<const std::optional<QDBusConnection> &>(
        [this](const std::optional<QDBusConnection> &connection) { busChanged(connection); }));
    trayWatch_.emplace(bus_, [this](std::optional<TrayWatch::Tray> tray) {
        // The library finds one that comes again by itself.
        if (!tray_)
            tray_ = tray;
        state_.hasTray = tray.has_value();
        stateChanged();
        updateTray();
    });
    creations_.tellOfInterrupted();
}

void HelperSession::busChanged(const std::optional<QDBusConnection> &connection)
{
    object_.reset();
    if (isQuitting_)
        return;
    if (connection && !BusProbe::libraryHasBus())
        beginAnew();
    // Until nothing is in use here, orders are taken all the same.
    if (isQuitting_)
        return;
    hotKeys_.setBus(connection);
    // The bus knows by now that we listen for changes; there may have been some before.
    if (connection || !hasRead_)
        settings_.read();
    if (!connection)
        return;
    object_.emplace(
        *connection,
        HelperObject::Handlers{
            .understand = BusOrders::creations,
            .give = [this](const QList<CreationOrder> &orders) { return creations_.create(orders); },
            .contentFor = BusOrders::launcher,
            .openLauncher = [this](const Launcher::Content &content,
                                   const QByteArray &token) { launcher_.open(content, token); },
        });
    stateChanged();
    instance_.claimName([this] { quit(); });
}

void HelperSession::stateChanged()
{
    if (!object_)
        return;
    object_->setState(state_.toMap());
    notificationCenter_.postNotificationName(QNBHelperStateChangedNotification);
}

void HelperSession::beginAnew()
{
    if (isQuitting_)
        return;
    const QWidgetList windows = QApplication::topLevelWidgets();
    const bool isUsed = std::any_of(windows.cbegin(), windows.cend(), [](const QWidget *window) {
        return window->isVisible() &&
               (qobject_cast<const QDialog *>(window) || qobject_cast<const QMenu *>(window));
    });
    if (!isUsed && !creations_.isBusy())
        // One that comes between this look and the next is carried out, then no more come.
        object_.reset();
    if (isUsed || creations_.isBusy()) {
        QTimer::singleShot(idlePause, this, &HelperSession::beginAnew);
        return;
    }
    qCInfo(lcSession) << "there is a session bus now: beginning anew";
    isQuitting_ = true;
    QCoreApplication::exit(beginAnewCode);
}

void HelperSession::quit()
{
    // Also if it was about to begin anew.
    isQuitting_ = true;
    object_.reset();
    launcher_.close();
    creations_.cancelAll();
    if (!creations_.isBusy())
        QCoreApplication::exit();
}

void HelperSession::leave()
{
    isQuitting_ = true;
    object_.reset();
    bus_->close();
    creations_.leave();
}

void HelperSession::update(const Result<QNBSettings> &settings)
{
    hasRead_ = true;
    launcher_.setSettings(settings);
    if (!settings) {
        // The menus keep what they have. Told once: further changes may find the same.
        if (!std::exchange(isOutOfDate_, true))
            creations_.notices().showProblem(translated("The presets in the menus are not up to date"),
                                             lineText(settings.error));
        updateTray();
        return;
    }
    isOutOfDate_ = false;
    qCInfo(lcSession) << "presets in the menu:" << launcher_.labels().size();
    showsInTray_ = settings->showMenubar;
    updateTray();
    if (trayMenu_)
        fill(*trayMenu_);
    hotKeys_.set(settings->shortcutCombo);
    contextMenu_.refresh();
}

void HelperSession::updateTray()
{
    const bool isShown = trayIcon_.has_value();
    const bool isWanted = tray_ && hasRead_ && showsInTray_;
    if (isWanted == isShown)
        return;
    trayIcon_.reset();
    trayMenu_.reset();
    if (!isWanted)
        return;
    trayMenu_.emplace(tray_ == TrayWatch::Tray::OnBus ? MenuText::Reader::Tray : MenuText::Reader::Library,
                      menuHandlers());
    fill(*trayMenu_);
    trayIcon_.emplace(*trayMenu_);
}

void HelperSession::fill(PresetMenu &menu) const
{
    menu.setContent(launcher_.labels(), creations_.recentFolders(), !isOutOfDate_);
    menu.setCanUndo(canUndo());
}

PresetMenu::Handlers HelperSession::menuHandlers()
{
    return {
        .create = [this](qsizetype preset, const QString &folder) { create(preset, folder); },
        .chooseFolder = [this](qsizetype preset) { chooseFolder(preset); },
        .undo = [this] { creations_.undoLast(); },
        .openPane = [this] { PaneLauncher::launchOrTell(creations_.notices()); },
        .quit = [this] { quit(); },
        .aboutToShow = [this](PresetMenu &menu) { fill(menu); },
    };
}

void HelperSession::create(qsizetype preset, const QString &folder)
{
    if (isQuitting_ || preset >= launcher_.labels().size())
        return;
    creations_.createOrTell(Creations::ordersIn({folder}, preset, launcher_.labels()[preset]));
}

void HelperSession::chooseFolder(qsizetype preset)
{
    if (isQuitting_ || preset >= launcher_.labels().size())
        return;
    const QString label = launcher_.labels()[preset];
    auto *dialog = new QFileDialog;
    dialog->setWindowTitle(translated("Create \"%1\" In").arg(lineText(label)));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    const QStringList last = creations_.recentFolders();
    dialog->setDirectory(last.isEmpty() ? DesktopFolders::home() : last.constFirst());
    connect(dialog, &QFileDialog::fileSelected, this, [this, preset, label](const QString &folder) {
        if (!isQuitting_)
            creations_.createOrTell(Creations::ordersIn({QDir::cleanPath(folder)}, preset, label));
    });
    OwnedWindow::show(dialog, this);
}
