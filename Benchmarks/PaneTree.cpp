// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Benchmarks/PaneTree.h"

#include "Shared/Source/QNBShared.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QMimeData>

namespace {

constexpr int emptyPreset = 0;
constexpr int samplePreset = 1;

template <class Outlet>
Outlet *outlet(const QWidget &view, const char *name)
{
    auto *found = dynamic_cast<Outlet *>(view.findChild<QObject *>(QString::fromLatin1(name)));
    if (!found)
        qFatal("the pane has no %s", name);
    return found;
}

} // namespace

PaneTree::PaneTree(const QNBPresetRecordPtr &preset)
    : pathToEdited_(pathToMiddle(*preset->fileHierarchy()))
{
    QNBSettings settings;
    settings.presets = {std::make_shared<QNBPresetRecord>(), preset};
    const Result<> stored = QNBSettingsStore::write(*services().preferences, settings);
    if (!stored)
        qFatal("the presets were not stored: %s", qPrintable(stored.error));

    pane_ = std::make_unique<QNBPrefPanePref>(services());
    mainView_.reset(pane_->loadMainView());
    if (!mainView_)
        qFatal("the pane did not load");
    pane_->mainViewDidLoad();
    pane_->didSelect();
    outline_ = outlet<OutlineView>(*mainView_, "_ui_presetHierarchyView");
    presetList_ = outlet<ArrayController>(*mainView_, "_ui_presetListController");
    redButton_ = outlet<QNBHoverButton>(*mainView_, "_ui_redButton");
    mainView_->show();
}

PaneTree::~PaneTree()
{
    // As a host does it.
    pane_.reset();
    mainView_.reset();
}

QNBPrefPanePref::Services PaneTree::services() const
{
    QNBPrefPanePref::Services services;
    services.preferences = std::make_unique<Preferences>(
        QNBProductIdentifier(), Preferences::Options{.folder = home_.path(), .lockFolder = home_.path()});
    services.postNotificationName = [](const QString &) {};
    services.openURL = [](const QUrl &) { return true; };
    services.allBundles = [] { return QList<Bundle>(); };
    services.everyProcessNamed = [](const QString &) { return QList<TQProcess>(); };
    services.installerServices = [](Preferences &preferences, const std::optional<Bundle> &bundle,
                                    const QNBPrefPanePref::Services::AlertAnswers &runAlertPanel) {
        auto installer = CMMInstaller::Services::standard(preferences, bundle, runAlertPanel);
        installer.systemVersion = [] { return std::nullopt; };
        return installer;
    };
    services.applicationSupportPath = home_.filePath(QStringLiteral("support"));
    return services;
}

QTreeView &PaneTree::view()
{
    return *outline_;
}

void PaneTree::insert()
{
    pane_->addFileToPresetHierarchy();
}

void PaneTree::rename(const QString &name)
{
    // What the editor does when the user is done.
    outline_->model()->setData(outline_->currentIndex(), name);
}

void PaneTree::color()
{
    redButton_->click();
}

void PaneTree::remove()
{
    pane_->deleteSelectedItemInPresetHierarchy();
}

void PaneTree::move()
{
    QMimeData data;
    Pasteboard pasteboard(data);
    pane_->outlineViewWriteItemsToPasteboard(*outline_, {outline_->itemAtRow(outline_->selectedRow())},
                                             pasteboard);
    pane_->outlineViewAcceptDrop(*outline_, DraggingInfo(data, DragOperation::Move), nullptr, 0);
}

void PaneTree::restore()
{
    pane_->undo();
    selectEdited();
}

void PaneTree::hideRows()
{
    presetList_->setSelectionIndex(emptyPreset);
}

void PaneTree::showExpanded()
{
    presetList_->setSelectionIndex(samplePreset);
    selectEdited();
}

void PaneTree::selectEdited()
{
    QModelIndex index;
    for (const int row : pathToEdited_)
        index = outline_->model()->index(row, 0, index);
    outline_->setCurrentIndex(index);
}
