// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBUnsavedState.h"

#include "Source/Controls/QNBShownTime.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Toolkit/PreferencePane.h"

#include <QSet>

#include <utility>

namespace {

using Kind = PaneNotice::Kind;

/// Equal settings make equal bytes.
QByteArray bytesOf(const QNBSettings &settings)
{
    const EncodedPreference encoded = QNBSettingsStore::encode(QNBSettingsStore::snapshot(settings));
    return encoded.writer.finish(encoded.top).bytes.value_or(QByteArray());
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
    file_.remove(std::exchange(restored_, {}));
}

void QNBUnsavedState::keep()
{
    timer_.stop();
    if (pane_.isEdited())
        file_.write(QNBSettingsStore::snapshot(pane_.shownSettings(), QDateTime::currentDateTimeUtc()),
                    std::exchange(restored_, {}));
    else
        file_.remove();
}

void QNBUnsavedState::offerWhatWasLeft()
{
    if (!pane_.listener())
        return;
    left_ = QNBLeftRecovery::allIn(folder_);
    isOlderLeft_ = false;
    if (!left_.empty())
        discardWhatIsKnown();
    offerNext();
}

void QNBUnsavedState::discardWhatIsKnown()
{
    QSet<QByteArray> known{bytesOf(pane_.shownSettings())};
    std::erase_if(left_, [&known](QNBLeftRecovery &left) {
        if (!left.settings())
            return false;
        const qsizetype before = known.size();
        known.insert(bytesOf(*left.settings()));
        if (known.size() > before)
            return false;
        if (const Result<> removed = left.discard(); !removed)
            qCWarning(lcPane) << "changes that are saved, or kept twice:" << removed.error;
        return true;
    });
}

void QNBUnsavedState::offerNext()
{
    if (left_.empty())
        pane_.listener()->takeBackNotice(Kind::Recovery);
    else
        pane_.listener()->showNotice(offerOf(left_.front()));
}

PaneNotice QNBUnsavedState::offerOf(const QNBLeftRecovery &left)
{
    const QString time = QNBShownTime(left.taken());
    const auto discardThem = [this] { discard(); };
    if (!left.settings()) {
        qCWarning(lcPane) << "unsaved changes cannot be read:" << left.settings().error;
        return {.kind = Kind::Recovery,
                .text =
                    tr("Changes of %1 were not saved, and what was kept of them cannot be read.").arg(time),
                .details = left.settings().error,
                .actions = {{tr("Discard"), discardThem}}};
    }
    QString text;
    QList<PaneNotice::Action> actions;
    const auto restoreThem = [this] { restore(); };
    const QDateTime lastSave = pane_.lastSave();
    if (isOlderLeft_) {
        text = tr("Older changes, of %1, were not saved either. If you restore them, they replace what "
                  "is shown.")
                   .arg(time);
        actions = {{tr("Restore %1").arg(time), restoreThem}, {tr("Discard %1").arg(time), discardThem}};
    } else if (!lastSave.isValid() || lastSave <= left.taken()) {
        text = tr("Changes of %1 were not saved, because the program ended unexpectedly.").arg(time);
        actions = {{tr("Restore"), restoreThem}, {tr("Discard"), discardThem}};
    } else {
        const QString saved = QNBShownTime(lastSave);
        text = tr("Changes of %1 were not saved. Other changes were saved later, on %2.").arg(time, saved);
        actions = {{tr("Restore %1").arg(time), restoreThem}, {tr("Keep %1").arg(saved), discardThem}};
    }
    return {.kind = Kind::Recovery, .text = text, .details = left.path(), .actions = actions};
}

void QNBUnsavedState::restore()
{
    restored_.push_back(std::move(left_.front()));
    left_.erase(left_.begin());
    isOlderLeft_ = true;
    pane_.restore(*restored_.back().settings(), tr("Restore Unsaved Changes"));
    offerNext();
}

void QNBUnsavedState::discard()
{
    if (const Result<> removed = left_.front().discard(); !removed)
        pane_.listener()->showNotice({.kind = Kind::Hint,
                                      .text = tr("They could not be removed, and will be offered again."),
                                      .details = removed.error});
    left_.erase(left_.begin());
    isOlderLeft_ = true;
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
