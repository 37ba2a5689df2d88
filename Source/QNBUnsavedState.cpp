// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBUnsavedState.h"

#include "Source/QNBPaneLog.h"
#include "Toolkit/PreferencePane.h"

#include <QLocale>

#include <algorithm>
#include <utility>

namespace {

using Kind = PaneNotice::Kind;

/// Equal settings make equal bytes.
QByteArray bytesOf(const QNBSettings &settings)
{
    const EncodedPreference encoded = QNBSettingsStore::encode(settings);
    return encoded.writer.finish(encoded.top).bytes.value_or(QByteArray());
}

QString shown(const QDateTime &time)
{
    return QLocale().toString(time, QLocale::ShortFormat);
}

} // namespace

QNBUnsavedState::QNBUnsavedState(Pane pane, const QString &folder, std::chrono::milliseconds delay)
    : pane_(std::move(pane))
    , folder_(folder)
    , file_(folder)
{
    timer_.setSingleShot(true);
    timer_.setInterval(delay);
    connect(&timer_, &QTimer::timeout, this, &QNBUnsavedState::keep);
    connect(&file_, &QNBRecoveryFile::failed, this, &QNBUnsavedState::couldNotBeKept, Qt::QueuedConnection);
}

void QNBUnsavedState::wasEdited()
{
    // Not begun anew by further edits: the first must not wait for the last.
    if (!timer_.isActive() && !folder_.isEmpty())
        timer_.start();
}

void QNBUnsavedState::wasSaved()
{
    timer_.stop();
    file_.remove();
    for (QNBLeftRecovery &restored : restored_) {
        if (const Result<> removed = restored.discard(); !removed)
            qCWarning(lcPane) << "restored changes:" << removed.error;
    }
    restored_.clear();
}

void QNBUnsavedState::keep()
{
    timer_.stop();
    if (pane_.isEdited())
        file_.write(QNBSettingsStore::encode(pane_.shownSettings()));
    else
        file_.remove();
}

void QNBUnsavedState::offerWhatWasLeft()
{
    if (!pane_.listener())
        return;
    left_ = QNBLeftRecovery::allIn(folder_);
    offerNext();
}

void QNBUnsavedState::offerNext()
{
    for (; !left_.empty(); left_.erase(left_.begin())) {
        QNBLeftRecovery &next = left_.front();
        const Result<QNBSettings> settings = next.read();
        if (!settings)
            qCWarning(lcPane) << "unsaved changes cannot be read:" << settings.error;
        if (settings && bytesOf(*settings) == bytesOf(pane_.shownSettings())) {
            if (const Result<> removed = next.discard(); !removed)
                qCWarning(lcPane) << "changes that were saved after all:" << removed.error;
            continue;
        }
        pane_.listener()->showNotice(offerOf(next, settings));
        return;
    }
    pane_.listener()->takeBackNotice(Kind::Recovery);
}

PaneNotice QNBUnsavedState::offerOf(const QNBLeftRecovery &left, const Result<QNBSettings> &settings)
{
    const QString time = shown(left.written());
    if (!settings)
        return {.kind = Kind::Recovery,
                .text =
                    tr("Changes of %1 were not saved, and what was kept of them cannot be read.").arg(time),
                .details = settings.error,
                .actions = {{tr("Discard"), [this] { discard(); }}}};

    const auto restoreThem = [this, recovered = *settings] { restore(recovered); };
    const QDateTime lastSave = pane_.lastSave();
    if (!lastSave.isValid() || lastSave <= left.written())
        return {.kind = Kind::Recovery,
                .text = tr("Changes of %1 were not saved, because the program ended unexpectedly.").arg(time),
                .details = left.path(),
                .actions = {{tr("Restore"), restoreThem}, {tr("Discard"), [this] { discard(); }}}};
    const QString saved = shown(lastSave);
    return {.kind = Kind::Recovery,
            .text =
                tr("Changes of %1 were not saved. Other changes were saved later, on %2.").arg(time, saved),
            .details = left.path(),
            .actions = {{tr("Restore %1").arg(time), restoreThem},
                        {tr("Keep %1").arg(saved), [this] { discard(); }}}};
}

void QNBUnsavedState::restore(const QNBSettings &settings)
{
    restored_.push_back(std::move(left_.front()));
    left_.erase(left_.begin());
    pane_.restore(settings, tr("Restore Unsaved Changes"));
    offerNext();
}

void QNBUnsavedState::discard()
{
    if (const Result<> removed = left_.front().discard(); !removed)
        pane_.listener()->showNotice({.kind = Kind::Hint,
                                      .text = tr("They could not be removed, and will be offered again."),
                                      .details = removed.error});
    left_.erase(left_.begin());
    offerNext();
}

void QNBUnsavedState::couldNotBeKept(const QString &reason)
{
    if (std::exchange(wasFailureTold_, true) || !pane_.listener())
        return;
    pane_.listener()->showNotice(
        {.kind = Kind::Hint,
         .text = tr("If the program ends unexpectedly, changes that are not saved yet will be lost: what "
                    "protects them cannot be written."),
         .details = reason});
}
