// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/LineText.h"
#include "Source/Editing/QNBPresetListCommands.h"
#include "Source/Model/QNBPresetFile.h"
#include "Source/Model/QNBPresetImport.h"
#include "Source/Pane/QNBImportNotice.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/PlainText.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeData>
#include <QProgressBar>
#include <QProgressDialog>
#include <QUrl>

namespace {

/// What an earlier import left out is told no longer.
void tell(PreferencePaneListener *listener, const QList<QNBPresetImport::LeftOut> &leftOut)
{
    if (!listener)
        return;
    if (leftOut.isEmpty())
        listener->takeBackNotice(PaneNotice::Kind::LeftOut);
    else
        listener->showNotice(QNBImportNotice::of(leftOut));
}

} // namespace

std::optional<AlertPanel::Answer> QNBPrefPanePref::answerTo(const AlertPanel &alert)
{
    const QPointer<QObject> self(this);
    const AlertPanel::Runner run = _services.runAlertPanel;
    const AlertPanel::Answer answer = run(_mainView, alert);
    return self ? std::optional(answer) : std::nullopt;
}

QStringList QNBPrefPanePref::filesFor(const FilePanel &panel)
{
    const QPointer<QObject> self(this);
    const FilePanel::Runner run = _services.runFilePanel;
    const QStringList paths = run(_mainView, panel);
    return self ? paths : QStringList();
}

void QNBPrefPanePref::importPresets(const QStringList &paths, int row)
{
    auto *import = new QNBPresetImport(paths, this);
    const auto end = [this, import, row] {
        tell(_listener, import->leftOut());
        insertImportedPresets(import->presets(), row);
    };
    if (import->wait(_services.unexplainedWait)) {
        end();
        delete import;
        return;
    }
    QProgressDialog *const progress =
        PlainText::progressDialog(tr("Importing presets…"), tr("Cancel"), 0, _mainView);
    // The bar is told on its own: told by the dialog it would handle other events in the midst of ours.
    auto *bar = new QProgressBar(progress);
    progress->setBar(bar);
    bar->setRange(0, static_cast<int>(paths.size()));
    progress->setWindowTitle(tr("Import Presets"));
    progress->setWindowModality(Qt::WindowModal);
    connect(import, &QNBPresetImport::fileWasRead, bar, &QProgressBar::setValue);
    connect(progress, &QProgressDialog::canceled, import, &QNBPresetImport::cancel);
    connect(import, &QObject::destroyed, progress, &QObject::deleteLater);
    connect(import, &QNBPresetImport::finished, this, [end, import] {
        end();
        import->deleteLater();
    });
    progress->show();
}

void QNBPrefPanePref::insertImportedPresets(const QList<QNBPresetRecordPtr> &presets, int row)
{
    if (presets.isEmpty())
        return;
    _history.push(
        new QNBInsertPresetsCommand(*_ui_presetListController, presets, row,
                                    presets.size() == 1 ? tr("Import Preset") : tr("Import Presets")));
}

void QNBPrefPanePref::importPresetsFromFiles()
{
    const QStringList paths = filesFor(
        {.kind = FilePanel::Kind::Files,
         .title = tr("Import Presets"),
         .acceptButton = tr("Import"),
         .folder = _exchangeFolder,
         .nameFilters = {tr("Preset files (*.%1)").arg(QNBPresetFile::extension), tr("All files (*)")}});
    if (paths.isEmpty())
        return;
    _exchangeFolder = QFileInfo(paths.constFirst()).path();
    openFiles(paths);
}

void QNBPrefPanePref::openFiles(const QStringList &paths)
{
    QMimeData data;
    Pasteboard pasteboard(data);
    pasteboard.declareTypes({PasteboardType::filenames});
    pasteboard.setPropertyListForType(paths, PasteboardType::filenames);
    const int selected = _ui_presetListController->selectionIndex();
    const auto end = static_cast<int>(_ui_presetListController->arrangedObjects().size());
    tableViewAcceptDrop(*_ui_presetListView, DraggingInfo(data, DragOperation::Copy),
                        selected == ArrayController::noIndex ? end : selected + 1, TableDropOperation::Above);
}

void QNBPrefPanePref::exportSelectedPreset()
{
    endEditing();
    const QNBPresetRecordPtr preset = _selectedItem;
    if (!preset)
        return;
    const QStringList chosen =
        filesFor({.kind = FilePanel::Kind::Folder,
                  .title = tr("Export “%1” to a Folder").arg(lineText(preset->label())),
                  .acceptButton = tr("Export"),
                  .folder = _exchangeFolder});
    if (chosen.isEmpty())
        return;
    _exchangeFolder = chosen.constFirst();

    const QString fileName = QNBPresetFile::fileNameForLabel(preset->label());
    const AlertPanel replace{.title = tr("Replace File"),
                             .message =
                                 tr("The folder '%1' has a file '%2' already. Do you want to replace it?")
                                     .arg(lineText(_exchangeFolder), lineText(fileName)),
                             .defaultButton = tr("Replace"),
                             .alternateButton = tr("Cancel")};
    const QFileInfo present(QDir(_exchangeFolder).filePath(fileName));
    const bool isThere = present.exists() || present.isSymLink();
    if (isThere && answerTo(replace) != AlertPanel::Answer::Default)
        return;

    const auto row = static_cast<int>(_ui_presetListController->arrangedObjects().indexOf(preset));
    tableViewNamesOfPromisedFilesDroppedAtDestination(*_ui_presetListView,
                                                      QUrl::fromLocalFile(_exchangeFolder), {row});
    if (_lastExport)
        return;
    answerTo({.title = tr("Preset Not Exported"),
              .message = tr("The preset '%1' could not be written to the folder '%2'.")
                             .arg(lineText(preset->label()), lineText(_exchangeFolder)),
              .defaultButton = tr("OK")});
}
