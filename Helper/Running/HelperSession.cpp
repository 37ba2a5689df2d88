// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/HelperSession.h"

#include "Helper/FolderPath.h"
#include "Helper/Presets.h"
#include "Helper/Running/OwnedWindow.h"
#include "Helper/Running/PaneLauncher.h"
#include "Helper/Running/ScriptPanel.h"
#include "Platform/DesktopFolders.h"
#include "Platform/LineText.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QFileDialog>
#include <QLoggingCategory>
#include <QMenu>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace {

Q_LOGGING_CATEGORY(lcSession, "quenby.helper.session")

/// The pane saves several times in a row when its windows come and go.
constexpr auto reloadDelay = 100ms;
/// Changes that never cease are waited for no longer than this.
constexpr auto longestReloadDelay = 1000ms;
/// Before settings that cannot be read are tried again: soon at first, for a home that is still being
/// mounted.
constexpr auto firstRetryPause = 1000ms;
constexpr auto longestRetryPause = 60'000ms;
/// Until it is looked again whether nothing is being done.
constexpr auto idlePause = 1000ms;

QString translated(const char *text)
{
    return QCoreApplication::translate("HelperSession", text);
}

Result<> checkAbsolute(const QStringList &folders)
{
    for (const QString &folder : folders) {
        if (!QDir::isAbsolutePath(folder))
            return Result<>::failure(translated("%1 is not an absolute path").arg(folder));
    }
    return {};
}

/// To create one preset in all of \a folders, in one step.
QList<CreationOrder> ordersIn(const QStringList &folders, qsizetype place, const QString &label)
{
    QList<CreationOrder> orders;
    const auto step = std::make_shared<UndoStep>(folders.size());
    for (const QString &folder : folders)
        orders.append({place, label, folder, step});
    return orders;
}

} // namespace

HelperSession::HelperSession(std::shared_ptr<SessionBus> bus, SingleInstance &instance)
    : bus_(std::move(bus))
    , instance_(instance)
    , folders_(DesktopFolders::stateFolder())
    , worker_(CreationWorker::Handlers{
          .begun = [this](const CreationOrder &order) { panel_.begin(order); },
          .ended =
              [this](const CreationOrder &order, const std::shared_ptr<CreationReport> &report) {
                  panel_.end();
                  if (!isQuitting_)
                      notices_.show(order, report);
              },
          .undone =
              [this](const UndoReport &report) {
                  if (!isQuitting_)
                      notices_.show(report);
              },
          .askAboutScript = [this](const CreationOrder &order,
                                   const Script &script) { askAboutScript(order, script); },
          .idle =
              [this] {
                  if (isQuitting_)
                      QCoreApplication::exit();
              },
      })
    , panel_([this] { return worker_->progress(); }, [this] { worker_->cancel(); })
    , notices_(bus_, [this](const std::shared_ptr<CreationReport> &report) { worker_->undo(report); })
    , notificationCenter_(bus_)
    , hotKeys_([this] { popUpMenu(); })
{
    reloadTimer_.setSingleShot(true);
    reloadTimer_.setInterval(reloadDelay);
    connect(&reloadTimer_, &QTimer::timeout, this, &HelperSession::reload);
    retryTimer_.setSingleShot(true);
    connect(&retryTimer_, &QTimer::timeout, this, &HelperSession::reload);
}

HelperSession::~HelperSession() = default;

void HelperSession::start()
{
    notificationCenter_.addObserver(QNBPresetConfigurationChangedNotification, [this] { settingsChanged(); });
    notificationCenter_.addObserver(QNBHotKeyIsBeingRecordedNotification,
                                    [this] { hotKeys_.pause(3 * QNBHotKeyRecordingInterval); });
    notificationCenter_.addObserver(QNBHotKeyRecordingEndedNotification, [this] { hotKeys_.resume(); });
    bus_->watch(mailbox_.bound<const std::optional<QDBusConnection> &>(
        [this](const std::optional<QDBusConnection> &connection) { busChanged(connection); }));
    trayWatch_.emplace(bus_, [this](TrayWatch::Tray tray) {
        tray_ = tray;
        updateTray();
    });
    if (const QStringList news = newsOfInterruptedCreations(); !news.isEmpty())
        notices_.showProblem(translated("A creation was interrupted"), news.join(u'\n'));
}

void HelperSession::busChanged(const std::optional<QDBusConnection> &connection)
{
    object_.reset();
    if (isQuitting_)
        return;
    if (connection && !BusProbe::libraryHasBus()) {
        beginAnew();
        return;
    }
    hotKeys_.setBus(connection);
    // The bus knows by now that we listen for changes; there may have been some before.
    if (connection || !hasRead_)
        reload();
    if (!connection)
        return;
    object_.emplace(*connection,
                    HelperObject::Handlers{
                        .understand = ordersFor,
                        .give = [this](const QList<CreationOrder> &orders) { return createAll(orders); },
                        .labelsFor = labelsFor,
                        .showMenu = [this](const QStringList &labels,
                                           const QStringList &folders) { showMenu(labels, folders); },
                    });
    instance_.claimName([this] { quit(); });
}

void HelperSession::beginAnew()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    const bool isUsed = std::any_of(windows.cbegin(), windows.cend(), [](const QWidget *window) {
        return window->isVisible() &&
               (qobject_cast<const QDialog *>(window) || qobject_cast<const QMenu *>(window));
    });
    if (isUsed || worker_->isBusy()) {
        QTimer::singleShot(idlePause, this, &HelperSession::beginAnew);
        return;
    }
    if (isQuitting_)
        return;
    qCInfo(lcSession) << "there is a session bus now: beginning anew";
    isQuitting_ = true;
    QCoreApplication::exit(beginAnewCode);
}

void HelperSession::quit()
{
    if (isQuitting_)
        return;
    isQuitting_ = true;
    object_.reset();
    worker_->cancelAll();
    if (!worker_->isBusy())
        QCoreApplication::exit();
}

void HelperSession::leave()
{
    isQuitting_ = true;
    object_.reset();
    bus_->close();
    worker_.reset();
}

void HelperSession::settingsChanged()
{
    if (!reloadTimer_.isActive())
        latestReload_.setRemainingTime(longestReloadDelay);
    reloadTimer_.start(std::min(reloadDelay, std::chrono::milliseconds(latestReload_.remainingTime())));
}

void HelperSession::reload()
{
    hasRead_ = true;
    const Result<QNBSettings> settings = readSettings();
    if (!settings) {
        retryTimer_.start(isOutOfDate_ ? std::min(2 * retryTimer_.intervalAsDuration(), longestRetryPause)
                                       : firstRetryPause);
        // The menus keep what they have. Told once: further changes may find the same.
        if (!std::exchange(isOutOfDate_, true))
            notices_.showProblem(translated("The presets in the menus are not up to date"),
                                 lineText(settings.error));
        updateTray();
        return;
    }
    isOutOfDate_ = false;
    retryTimer_.stop();
    labels_.clear();
    for (const QNBPresetRecordPtr &preset : settings->presets)
        labels_.append(preset->label());
    qCInfo(lcSession) << "presets in the menu:" << labels_.size();
    showsInTray_ = settings->showMenubar;
    updateTray();
    if (trayMenu_)
        fill(*trayMenu_);
    if (popupMenu_)
        fill(*popupMenu_);
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

void HelperSession::popUpMenu()
{
    if (isQuitting_)
        return;
    if (!popupMenu_)
        popupMenu_.emplace(MenuText::Reader::Library, menuHandlers());
    popupMenu_->menu().popup(QCursor::pos());
}

void HelperSession::fill(PresetMenu &menu) const
{
    menu.setContent(labels_, folders_.existing(), !isOutOfDate_);
    menu.setCanUndo(canUndo());
}

PresetMenu::Handlers HelperSession::menuHandlers()
{
    return {
        .create = [this](qsizetype preset, const QString &folder) { create(preset, folder); },
        .chooseFolder = [this](qsizetype preset) { chooseFolder(preset); },
        .undo = [this] { worker_->undoLast(); },
        .openPane = [this] { openPane(); },
        .quit = [this] { quit(); },
        .aboutToShow = [this](PresetMenu &menu) { fill(menu); },
    };
}

void HelperSession::create(qsizetype preset, const QString &folder)
{
    if (isQuitting_ || preset >= labels_.size())
        return;
    createOrTell({{preset, labels_[preset], folder}});
}

void HelperSession::createOrTell(const QList<CreationOrder> &orders)
{
    if (!createAll(orders))
        notices_.showProblem(translated("\"%1\" was not created").arg(orders.constFirst().label),
                             translated("Too many folders are waiting for their presets."));
}

void HelperSession::chooseFolder(qsizetype preset)
{
    if (isQuitting_ || preset >= labels_.size())
        return;
    const QString label = labels_[preset];
    auto *dialog = new QFileDialog;
    dialog->setWindowTitle(translated("Create \"%1\" In").arg(lineText(label)));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    const QStringList last = folders_.existing();
    dialog->setDirectory(last.isEmpty() ? DesktopFolders::home() : last.constFirst());
    connect(dialog, &QFileDialog::fileSelected, this, [this, preset, label](const QString &folder) {
        // The list may have changed meanwhile.
        const qsizetype place =
            preset < labels_.size() && labels_[preset] == label ? preset : labels_.indexOf(label);
        create(place < 0 ? labels_.size() : place, QDir::cleanPath(folder));
    });
    OwnedWindow::show(dialog, this);
}

Result<QList<CreationOrder>> HelperSession::ordersFor(const HelperService::Preset &preset,
                                                      const QStringList &folders)
{
    using Orders = Result<QList<CreationOrder>>;
    const Result<QNBSettings> settings = readSettings();
    QString error = settings.error;
    const QNBPresetRecordPtr record =
        settings ? presetShown(settings->presets, preset.label, preset.position, &error) : nullptr;
    if (!record)
        return Orders::failure(error);
    if (const Result<> absolute = checkAbsolute(folders); !absolute)
        return Orders::failure(absolute.error);
    return ordersIn(folders, settings->presets.indexOf(record), record->label());
}

Result<QStringList> HelperSession::labelsFor(const QStringList &folders)
{
    using Labels = Result<QStringList>;
    if (folders.isEmpty())
        return Labels::failure(translated("No folder is named"));
    if (const Result<> absolute = checkAbsolute(folders); !absolute)
        return Labels::failure(absolute.error);
    // Read here and now: nobody need have told of the last changes.
    const Result<QNBSettings> settings = readSettings();
    if (!settings)
        return Labels::failure(settings.error);
    QStringList labels;
    for (const QNBPresetRecordPtr &preset : settings->presets)
        labels.append(preset->label());
    return labels;
}

void HelperSession::showMenu(const QStringList &labels, const QStringList &folders)
{
    if (isQuitting_)
        return;
    const auto create = [this, folders](qsizetype place, const QString &label) {
        if (!isQuitting_)
            createOrTell(ordersIn(folders, place, label));
    };
    folderMenu_.emplace(labels, folders,
                        FolderMenu::Handlers{.create = create, .openPane = [this] { openPane(); }});
    folderMenu_->menu().popup(QCursor::pos());
}

bool HelperSession::createAll(const QList<CreationOrder> &orders)
{
    if (!worker_->create(orders))
        return false;
    QMetaObject::invokeMethod(
        this, [this, orders] { remember(orders); }, Qt::QueuedConnection);
    return true;
}

void HelperSession::remember(const QList<CreationOrder> &orders)
{
    QStringList folders;
    for (const CreationOrder &order : orders.last(std::min(orders.size(), RecentFolders::mostKept)))
        folders.append(FolderPath::shortened(order.folder));
    folders_.add(folders);
}

void HelperSession::askAboutScript(const CreationOrder &order, const Script &script)
{
    if (isQuitting_)
        return;
    panel_.end();
    OwnedWindow::show(new ScriptPanel(order, script,
                                      [this, order](bool mayRun) {
                                          panel_.begin(order);
                                          worker_->answerAboutScript(mayRun);
                                      }),
                      this);
}

void HelperSession::openPane()
{
    if (!PaneLauncher::launch())
        notices_.showProblem(translated("Quenby could not be opened"),
                             translated("Its settings program was not found."));
}
