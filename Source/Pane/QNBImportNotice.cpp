// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBImportNotice.h"

#include "Platform/LineText.h"

#include <QFileInfo>

#include <algorithm>

PaneNotice QNBImportNotice::of(const QList<QNBPresetImport::LeftOut> &leftOut)
{
    const QString name = lineText(QFileInfo(leftOut.constFirst().path).fileName());
    const QString reason = lineText(leftOut.constFirst().reason);
    QString text;
    if (leftOut.size() == 1)
        text = tr("“%1” was not imported: %2.").arg(name, reason);
    else if (leftOut.size() == 2)
        text = tr("“%1” was not imported: %2. Nor was one more file.").arg(name, reason);
    else
        text = tr("“%1” was not imported: %2. Nor were %3 more files.")
                   .arg(name, reason, QString::number(leftOut.size() - 1));

    QStringList lines;
    for (const QNBPresetImport::LeftOut &file : leftOut.first(std::min(leftOut.size(), mostNamed)))
        lines.append(tr("%1: %2").arg(lineText(file.path), lineText(file.reason)));
    if (const qsizetype more = leftOut.size() - lines.size(); more > 0)
        lines.append(tr("And %1 more").arg(more));
    return {.kind = PaneNotice::Kind::LeftOut, .text = text, .details = lines.join(u'\n')};
}
