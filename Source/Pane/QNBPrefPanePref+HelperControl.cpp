// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Pane/QNBFileManagersRow.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Toolkit/KeyComboRecorder.h"

#include <QCheckBox>
#include <QDeadlineTimer>
#include <QLabel>
#include <QPushButton>
#include <QStandardPaths>
#include <QTimer>
#include <csignal>
#include <functional>

namespace {

/// The name of the helper's process, and of its bundle.
const QString helperName = QStringLiteral("QNBHelper");
const QString applicationType = QStringLiteral("app");
/// As seen from the bundle's resources.
const QString helperFolder = QStringLiteral("../MacOS");

// The button's title is the believed state, which the toggle goes by: never translated.
const QString startTitle = QStringLiteral("Start");
const QString stopTitle = QStringLiteral("Stop");
const QString runningStatus = QStringLiteral("Status: Quenby is running");
const QString stoppedStatus = QStringLiteral("Status: Quenby is stopped");

/// A helper that was told to start or to end is given this time before its state is looked at.
constexpr std::chrono::microseconds helperPause(250'000);
constexpr std::chrono::milliseconds installerDelay(1000);
/// A helper that has left the bus is looked at so often until it has ended, and so long: it may have to undo
/// something first.
constexpr std::chrono::milliseconds pauseBetweenLooks(1000);
constexpr std::chrono::seconds longestEnd(90);

/// Has the helper leave the present shortcut to the recorder: else its keys would show the presets. \a post
/// is kept no longer than \a pane lives; the view may outlive that.
void tellOfRecording(KeyComboRecorder &recorder, const QObject &pane,
                     const std::function<void(const QString &)> &post)
{
    auto *repeat = new QTimer(&recorder);
    repeat->setInterval(QNBHotKeyRecordingInterval);
    QObject::connect(repeat, &QTimer::timeout, &pane, [post] { post(QNBHotKeyIsBeingRecordedNotification); });
    QObject::connect(&recorder, &KeyComboRecorder::recordingChanged, &pane, [post, repeat](bool isRecording) {
        isRecording ? repeat->start() : repeat->stop();
        post(isRecording ? QNBHotKeyIsBeingRecordedNotification : QNBHotKeyRecordingEndedNotification);
    });
}

} // namespace

void QNBPrefPanePref::setUpHelperControl()
{
    connect(_ui_startStopButton, &QPushButton::clicked, this, &QNBPrefPanePref::toggleHelperStatus);
    connect(_ui_showMenubar, &QCheckBox::clicked, this, &QNBPrefPanePref::toggleMenubar);
    connect(_ui_shortcutRecorderControl, &KeyComboRecorder::keyComboDidChange, this,
            [this](const KeyCombo &combo) {
                shortcutRecorderKeyComboDidChange(*_ui_shortcutRecorderControl, combo);
            });
    tellOfRecording(*_ui_shortcutRecorderControl, *this, _services.postNotificationName);

    // One look at all processes serves the choice and the status, if nothing was started in between.
    const bool isRunning = isHelperRunning();
    if (isRunning || !QNBSettingsStore::wantsHelper(*_services.preferences))
        return showStatus(isRunning);
    toggleHelperStatus();
    updateStatus();
}

bool QNBPrefPanePref::isHelperRunning() const
{
    return !_services.everyProcessNamed(helperName).isEmpty();
}

QString QNBPrefPanePref::helperPath() const
{
    const std::optional<Bundle> bundle = ourBundle();
    return bundle ? bundle->pathForResource(helperName, applicationType, helperFolder) : QString();
}

QString QNBPrefPanePref::launcherCommand() const
{
    const std::optional<Bundle> helper = Bundle::bundleWithPath(helperPath());
    const bool isInPath = !QStandardPaths::findExecutable(helperName).isEmpty();
    const QString program = isInPath || !helper ? helperName : helper->expectedExecutablePath();
    return (program.contains(u' ') ? u'"' + program + u'"' : program) + QStringLiteral(" --launcher");
}

void QNBPrefPanePref::updateStatus()
{
    showStatus(isHelperRunning());
}

void QNBPrefPanePref::showStatus(bool isRunning)
{
    _ui_statusLabel->setText(isRunning ? runningStatus : stoppedStatus);
    _ui_startStopButton->setText(isRunning ? stopTitle : startTitle);
    const bool isPossible = isRunning || !helperPath().isEmpty();
    _ui_startStopButton->setEnabled(isPossible);
    _ui_startStopButton->setToolTip(isPossible ? tr("Start or stop the helper")
                                               : tr("This installation comes without the helper"));
}

void QNBPrefPanePref::toggleHelperStatus()
{
    const QString path = helperPath();
    const bool shouldRun = _ui_startStopButton->text() == startTitle;
    if (path.isEmpty())
        qCWarning(lcPane) << "the pane's bundle holds no" << helperName
                          << "to start; the choice and the login items stay";
    if (shouldRun && path.isEmpty()) {
        updateStatus();
        return;
    }

    if (shouldRun) {
        _services.openFile(path);
    } else {
        const QList<TQProcess> helpers = _services.everyProcessNamed(helperName);
        for (const TQProcess &helper : helpers)
            _services.kill(helper, SIGTERM);
    }
    _services.sleep(helperPause);
    if (path.isEmpty()) {
        // The login items of nothing would be all of them, and the choice keeps in step with them.
        updateStatus();
        return;
    }
    _services.addLoginItem(path, shouldRun);
    updateStatus();
    _services.preferences->setAppValue(QNBPreferenceKey::launchHelperOnStart, shouldRun);
}

void QNBPrefPanePref::dummyAction() {}

void QNBPrefPanePref::toggleMenubar()
{
    (void)writePreferences();
}

void QNBPrefPanePref::shortcutRecorderKeyComboDidChange(const KeyComboRecorder &, const KeyCombo &)
{
    (void)writePreferences();
}

void QNBPrefPanePref::setUpGeneralTab()
{
    // The pane may be left while the installer waits for an answer.
    const auto ask = [pane = QPointer(this)](const AlertPanel &alert) {
        return pane ? pane->answerTo(alert) : std::nullopt;
    };
    const auto world = [this, ask] {
        return _services.installerServices(*_services.preferences, ourBundle(), ask);
    };
    _fileManagersRow = std::make_unique<QNBFileManagersRow>(*_mainView, world, [this] { return _listener; });
    _helperNotes = std::make_unique<QNBHelperNotes>(*_mainView, _services.askHelper,
                                                    [this] { return launcherCommand(); });
    const auto installer = std::make_shared<CMMInstaller>(world());
    auto *timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, [this, timer, installer] {
        timer->deleteLater();
        _fileManagersRow->updateAndTell();
        installer->offerToInstallCMM();
    });
    timer->start(installerDelay);

    _ui_generalViewContainer->installEventFilter(this);
    auto *const looks = new QTimer(_mainView);
    looks->setInterval(pauseBetweenLooks);
    const auto last = std::make_shared<QDeadlineTimer>();
    connect(looks, &QTimer::timeout, this, [this, looks, last] {
        updateStatus();
        if (last->hasExpired() || _ui_startStopButton->text() == startTitle)
            looks->stop();
    });
    _services.watchHelper([pane = QPointer(this), looks = QPointer(looks), last] {
        if (!pane || !looks)
            return;
        pane->updateStatus();
        pane->_helperNotes->update();
        *last = QDeadlineTimer(longestEnd);
        looks->start();
    });
}

void QNBPrefPanePref::updateGeneralTab()
{
    updateStatus();
    _helperNotes->update();
    _fileManagersRow->update();
}
