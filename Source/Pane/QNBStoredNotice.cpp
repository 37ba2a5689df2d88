// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBStoredNotice.h"

#include "Platform/LineText.h"
#include "Source/Controls/QNBShownTime.h"
#include "Toolkit/NoticeStrip.h"

using Cause = Preferences::Damage::Cause;
using Kind = PaneNotice::Kind;

PaneNotice QNBStoredNotice::ofUnread(const QString &reason, const std::optional<Preferences::Damage> &damage,
                                     const QDateTime &shown, bool isEdited)
{
    const QString shortly = lineText(NoticeStrip::shortReason(reason));
    QString meanwhile;
    if (isEdited)
        meanwhile = tr("Your changes cannot be saved yet.");
    else if (shown.isValid())
        meanwhile = tr("Those of %1, from the backup, are shown.").arg(QNBShownTime(shown));
    else
        meanwhile = tr("The default presets are shown.");
    if (!damage)
        return {.kind = Kind::Unreadable,
                .text = QStringList{tr("Your presets and options cannot be read: %1.").arg(shortly),
                                    meanwhile, tr("Nothing is saved in place of what is stored.")}
                            .join(u' '),
                .details = reason};
    const QString obstacle =
        tr("Nothing can be saved before the file is replaced, which is not possible now: %1.").arg(shortly);
    return {.kind = Kind::Unreadable,
            .text = QStringList{whatHappened(*damage), meanwhile, obstacle}.join(u' '),
            .details = QStringList{damage->reason, reason}.join(u'\n')};
}

PaneNotice QNBStoredNotice::ofMended(const Preferences::Damage &damage, bool isShown)
{
    QStringList text{whatHappened(damage)};
    if (!isShown)
        text += tr("What is shown takes their place.");
    else if (damage.backup.isValid())
        text += tr("Those of %1 were restored from the backup.").arg(QNBShownTime(damage.backup));
    else
        text += tr("There was no good backup: you begin with the default presets.");
    if (!damage.kept.isEmpty()) {
        const QString path = lineText(damage.kept.constFirst());
        text += damage.cause == Cause::Missing ? tr("The damaged backup is kept as %1.").arg(path)
                                               : tr("The file is kept as %1.").arg(path);
    }
    return {.kind = Kind::Replaced,
            .text = text.join(u' '),
            .details = (QStringList(damage.reason) + damage.kept).join(u'\n')};
}

QString QNBStoredNotice::whatHappened(const Preferences::Damage &damage)
{
    switch (damage.cause) {
    case Cause::Broken:
        return tr("Your presets could not be read, because their file was damaged.");
    case Cause::TooLarge:
        return tr("Your presets could not be read, because their file was too large.");
    case Cause::Missing:
        break;
    }
    return tr("The file of your presets was missing.");
}
