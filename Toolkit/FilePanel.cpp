// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/FilePanel.h"
#include "Platform/LineText.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

namespace {

/// \a path, or the nearest folder around it that is there.
QString existingFolder(QString path)
{
    while (!QFileInfo(path).isDir()) {
        const QString outer = QFileInfo(path).path();
        if (outer == path)
            break;
        path = outer;
    }
    return path;
}

} // namespace

QStringList FilePanel::run(QWidget *parent) const
{
    // Held by a pointer because its window may go, and the dialog with it, while the user looks around.
    const QPointer<QFileDialog> dialog = new QFileDialog(parent, lineText(title), existingFolder(folder));
    dialog->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    if (kind == Kind::NewFile) {
        dialog->setFileMode(QFileDialog::AnyFile);
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->selectFile(QFileInfo(folder).fileName());
    } else {
        dialog->setFileMode(kind == Kind::Files ? QFileDialog::ExistingFiles : QFileDialog::Directory);
    }
    dialog->setOption(QFileDialog::ShowDirsOnly, kind == Kind::Folder);
    dialog->setLabelText(QFileDialog::Accept, acceptButton);
    if (!nameFilters.isEmpty())
        dialog->setNameFilters(nameFilters);

    const bool isAccepted = dialog->exec() == QDialog::Accepted && dialog;
    const QStringList paths = isAccepted ? dialog->selectedFiles() : QStringList();
    delete dialog;
    return paths;
}

FilePanel::Runner FilePanel::runner()
{
    return [](QWidget *parent, const FilePanel &panel) { return panel.run(parent); };
}
