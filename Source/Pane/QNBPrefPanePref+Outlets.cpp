// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Toolkit/ArrayController.h"
#include "Toolkit/KeyComboRecorder.h"
#include "Toolkit/OutlineView.h"

#include <QAction>
#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>

namespace {

/// Finds objects by name and kind, and remembers which are missing.
class Connector
{
public:
    explicit Connector(const QHash<QString, QObject *> &objects)
        : objects_(objects)
    {
    }

    template <typename T>
    void connect(T *&field, const QString &name)
    {
        field = dynamic_cast<T *>(objects_.value(name));
        if (!field)
            missing_.append(name);
    }

    const QStringList &missing() const { return missing_; }

private:
    const QHash<QString, QObject *> &objects_;
    QStringList missing_;
};

} // namespace

// A field is connected to the object that bears its own name.
#define CONNECT(field) connector.connect(field, QStringLiteral(#field))

QStringList QNBPrefPanePref::connectOutlets(QWidget &view)
{
    _outlets.clear();
    const QList<QObject *> objects = view.findChildren<QObject *>();
    for (QObject *object : objects) {
        if (object->objectName().startsWith(u'_'))
            _outlets.insert(object->objectName(), object);
    }

    Connector connector(_outlets);
    CONNECT(_ui_presetListView);
    CONNECT(_ui_presetListController);
    CONNECT(_ui_presetHierarchyView);
    CONNECT(_ui_hoveredColor);
    CONNECT(_ui_websiteLink);
    CONNECT(_ui_redButton);
    CONNECT(_ui_orangeButton);
    CONNECT(_ui_yellowButton);
    CONNECT(_ui_greenButton);
    CONNECT(_ui_blueButton);
    CONNECT(_ui_purpleButton);
    CONNECT(_ui_grayButton);
    CONNECT(_ui_clearColorButton);
    CONNECT(_ui_permGroupR);
    CONNECT(_ui_permGroupW);
    CONNECT(_ui_permGroupX);
    CONNECT(_ui_permOwnerR);
    CONNECT(_ui_permOwnerW);
    CONNECT(_ui_permOwnerX);
    CONNECT(_ui_permOthersR);
    CONNECT(_ui_permOthersW);
    CONNECT(_ui_permOthersX);
    CONNECT(_ui_applyPermissionsRecursively);
    CONNECT(_ui_presetDescription);
    CONNECT(_leftColumnSplit);
    CONNECT(_ui_presetContextualMenu);
    CONNECT(_ui_scriptSelectionMenu);
    CONNECT(_ui_showMenubar);
    CONNECT(_ui_shortcutRecorderControl);
    CONNECT(_ui_oldWindow);
    CONNECT(_ui_generalViewContainer);
    CONNECT(_ui_infoViewContainer);
    CONNECT(_ui_infoView);
    CONNECT(_ui_versionLabel);
    CONNECT(_ui_statusLabel);
    CONNECT(_ui_startStopButton);
    CONNECT(_colorRow);
    CONNECT(_permissionsGrid);
    CONNECT(_productName);
    CONNECT(_presetsTab);
    CONNECT(_addPresetButton);
    CONNECT(_removePresetButton);
    CONNECT(_presetActionsButton);
    CONNECT(_addFileButton);
    CONNECT(_addFolderButton);
    CONNECT(_itemActionsButton);
    CONNECT(_scriptButton);
    CONNECT(_presetActionsMenu);
    CONNECT(_defaultPresetsMenu);
    CONNECT(_itemActionsMenu);
    CONNECT(_fileContentMenu);
    CONNECT(_addPresetAction);
    CONNECT(_renamePresetAction);
    CONNECT(_removePresetAction);
    CONNECT(_movePresetUpAction);
    CONNECT(_movePresetDownAction);
    CONNECT(_importPresetsAction);
    CONNECT(_exportPresetAction);
    CONNECT(_restoreEarlierStateAction);
    CONNECT(_scriptLabel);
    CONNECT(_permissionsAction);
    CONNECT(_undoAction);
    CONNECT(_redoAction);
    CONNECT(_addFileAction);
    CONNECT(_addFolderAction);
    CONNECT(_renameItemAction);
    CONNECT(_deleteItemAction);
    CONNECT(_moveItemUpAction);
    CONNECT(_moveItemDownAction);
    CONNECT(_moveItemIntoFolderAction);
    CONNECT(_moveItemOutOfFolderAction);
    CONNECT(_helpButton);
    CONNECT(_descriptionToggle);
    CONNECT(_descriptionToggleLayout);
    return connector.missing();
}

#undef CONNECT
