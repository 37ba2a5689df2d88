// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/Controls/QNBHoverButton.h"
#include "Source/Controls/QNBOutlineViewAdditions.h"
#include "Source/Editing/QNBDraggedItem.h"
#include "Source/Editing/QNBEditCommand.h"
#include "Source/Model/QNBFolderMenu.h"
#include "Source/Model/QNBItemStep.h"
#include "Source/Model/QNBPermissions.h"
#include "Source/Model/QNBSettingsStore.h"
#include "Source/Pane/QNBPaneServices.h"
#include "Source/Pane/QNBSharedLabels.h"
#include "Source/Pane/QNBUnsavedState.h"
#include "Toolkit/OutlineViewDataSource.h"
#include "Toolkit/PreferencePane.h"
#include "Toolkit/TableView.h"
#include "Toolkit/WorkspaceIcons.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QHash>
#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QUndoStack>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class QAction;
class QBoxLayout;
class QCheckBox;
class QLabel;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QSplitter;
class QWidget;
class QWindow;
QT_END_NAMESPACE

class ArrayController;
class KeyComboRecorder;
struct KeyCombo;
class MenuViewAction;
class OutlineView;
class QNBFileManagersRow;

/// The preference pane: edits the presets and options that it shares with the helper through the product's
/// preference domain, and saves them whenever it is left or one of the process's windows loses the keyboard.
///
/// One class by convention; the files `QNBPrefPanePref+….cpp` hold one role each.
class QNBPrefPanePref final : public QObject,
                              public PreferencePane,
                              public OutlineViewDataSource,
                              public TableViewDelegate,
                              public QNBHoverButtonDelegate,
                              private QNBEditObserver
{
    Q_DECLARE_TR_FUNCTIONS(QNBPrefPanePref)

public:
    using Services = QNBPaneServices;

    explicit QNBPrefPanePref(Services services = Services::standard());
    ~QNBPrefPanePref() override;

    /// The first of \a allBundles with the product's identifier.
    static std::optional<Bundle> ourBundle(const QList<Bundle> &allBundles);

    void setListener(PreferencePaneListener *listener) override { _listener = listener; }
    QWidget *loadMainView() override;
    QWidget *mainView() const override { return _mainView; }
    void mainViewDidLoad() override;
    void didSelect() override;
    Result<> didUnselect() override;
    Result<> save() override;
    /// The same keys and values as in the domain: the file could take its place.
    Result<> saveCopy(const QString &path) override;
    /// Presets: they are inserted below the selected one, which is one step of the history.
    void openFiles(const QStringList &paths) override;

    /// Commits what is being typed, then saves.
    void windowDidResignKey();

    /// Connects the fields `_ui_…` to the objects of these names in \a view. The names that are not there, or
    /// belong to another kind of object, are returned; the pane cannot work without them.
    QStringList connectOutlets(QWidget &view);

    /// Whether a menu item makes sense for the selection of the outline. Items carry the name of what they do
    /// as the property "action" and their tag as "tag".
    bool validateMenuItem(const QObject &menuItem) const;
    void showHideDescriptionPane(Qt::CheckState state);
    void openAppWebsite();
    void openHelpWebsite();
    void observeValueForKeyPath(const QString &keyPath);

    /// Builds the entries of the menus of content files and scripts anew, below the three fixed ones; any
    /// other menu is left alone. What an entry stands for is its data, a path relative to the folder that the
    /// menu shows; its text is that path in a form fit to be read.
    void menuNeedsUpdate(QMenu &menu);
    void fileContentItemClicked(const QAction &menuItem);
    void scriptsItemClicked(const QAction &menuItem);
    /// Where the pointer is if that is over \a sender, otherwise below it.
    void popUpScriptSelectionMenu(const QWidget &sender);
    void openScriptsFolder();
    void openFileContentFolder();

    /// Take back and make again what the user did, step by step; presets that are concerned get selected.
    void undo();
    void redo();

    /// Appends a preset without a tree, selects it and starts editing its label.
    void addPreset();
    /// Asks first.
    void removeSelectedPresetAfterConfirmation();
    void renameSelectedPreset();
    void moveSelectedPresetUp();
    void moveSelectedPresetDown();
    /// Ask for the files and for the folder.
    void importPresetsFromFiles();
    void exportSelectedPreset();
    /// Asks for the state; the whole list gives way to it.
    void restoreEarlierState();

    // What is done to the item at the outline's selected row. Each is one step of the history.
    void addFileToPresetHierarchy();
    void addDirectoryToPresetHierarchy();
    void renameSelectedItemInPresetHierarchy();
    void deleteSelectedItemInPresetHierarchy();
    /// What a drag does, without a mouse, through the calls of a drag.
    void moveSelectedItemInPresetHierarchy(QNBItemStep step);

    /// Starts the helper and makes it start with the session, or ends it and takes that back, as the title of
    /// the button says; the choice is stored. Blocks for a quarter of a second. Without a helper in the
    /// bundle one that runs is still ended, but nothing is started, and login items and choice stay.
    void toggleHelperStatus();
    /// Save: the helper reads the option from the domain.
    void toggleMenubar();
    void shortcutRecorderKeyComboDidChange(const KeyComboRecorder &recorder, const KeyCombo &combo);
    /// What a menu item does that only holds something: nothing.
    void dummyAction();

    /// The value of \a key in our bundle's information property list; invalid if there is none.
    QVariant configValueForKey(const QString &key) const;
    /// An image registered when the pane woke; null if there is none of that name.
    QIcon imageNamed(const QString &name) const { return _images.value(name); }

    int outlineViewNumberOfChildrenOfItem(OutlineView &outlineView, const OutlineItem &item) override;
    bool outlineViewIsItemExpandable(OutlineView &outlineView, const OutlineItem &item) override;
    OutlineItem outlineViewChildOfItem(OutlineView &outlineView, int index, const OutlineItem &item) override;
    QVariant outlineViewObjectValueForTableColumn(OutlineView &outlineView, int column,
                                                  const OutlineItem &item) override;
    void outlineViewSetObjectValue(OutlineView &outlineView, const QVariant &value, int column,
                                   const OutlineItem &item) override;
    bool outlineViewShouldEditTableColumn(OutlineView &outlineView, int column,
                                          const OutlineItem &item) override;
    void outlineViewWillDisplayCell(OutlineView &outlineView, ViewCell &cell, int column,
                                    const OutlineItem &item) override;
    void outlineViewSelectionDidChange(OutlineView &outlineView) override;
    void outlineViewDeleteRowRequested(OutlineView &outlineView, int row) override;
    bool outlineViewWriteItemsToPasteboard(OutlineView &outlineView, const QList<OutlineItem> &items,
                                           Pasteboard &pasteboard) override;
    DragOperations outlineViewValidateDrop(OutlineView &outlineView, const DraggingInfo &draggingInfo,
                                           const OutlineItem &proposedItem, int childIndex) override;
    bool outlineViewAcceptDrop(OutlineView &outlineView, const DraggingInfo &draggingInfo,
                               const OutlineItem &item, int childIndex) override;

    bool tableViewWriteRowsWithIndexesToPasteboard(TableView &tableView, const QList<int> &rows,
                                                   Pasteboard &pasteboard) override;
    DragOperations tableViewValidateDrop(TableView &tableView, const DraggingInfo &info, int proposedRow,
                                         TableDropOperation operation) override;
    bool tableViewAcceptDrop(TableView &tableView, const DraggingInfo &info, int row,
                             TableDropOperation operation) override;
    QStringList tableViewNamesOfPromisedFilesDroppedAtDestination(TableView &tableView,
                                                                  const QUrl &dropDestination,
                                                                  const QList<int> &rows) override;
    QString tableViewProbableNameOfPromisedFile(TableView &tableView, int row) override;
    void tableViewWillDisplayCell(TableView &tableView, ViewCell &cell, const TableColumn &column,
                                  int row) override;
    bool tableViewValidateValue(TableView &tableView, QVariant &value, const TableColumn &column,
                                int row) override;
    void tableViewSetObjectValue(TableView &tableView, const QVariant &value, const TableColumn &column,
                                 int row) override;

    /// Gives the selected item the colour that is the button's title.
    void colorLabelButtonClicked(const QNBHoverButton &sender);
    /// Lights the button of the selected item's colour, and no other.
    void updateColorLabelButtons();
    void colorLabelButtonHovered(QNBHoverCell &sender) override;

    /// Sets or clears the bit of the selected item's permissions that the checkbox's tag says.
    void permissionsCheckboxClicked(const QCheckBox &sender);
    /// Shows the selected item's permissions; none without one.
    void updatePermissionCheckboxes();
    /// Gives the permissions that the checkboxes show to the selected item and to all below it.
    void applyPermissionsRecursively();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Lifecycle and start-up wiring
    void awakeFromNib();
    void buildTreesWhenIdle();
    void focusWindowChanged(QWindow *window);
    void endEditing();
    std::optional<Bundle> ourBundle() const;

    // The interface description's parts that no description can hold
    void placeDetachedViews();
    void makeContextualMenu();
    void setUpColorButtons();
    void showWebsiteLink();
    void validateMenu(const QMenu &menu);

    // Preset list
    void makePresetList();
    void setUpPresetActions();
    void presetListDidChange();
    /// In the order in which the user sees them.
    QList<QNBPresetRecordPtr> shownPresets() const;
    /// \a label, or that with the first number that no preset of the list has.
    QString uniqueLabel(const QString &label) const;
    /// Fills the menu of the presets that come with the pane.
    void showDefaultPresets();
    /// And the files that it names, as far as they are missing.
    void addDefaultPreset(const QNBPresetRecordPtr &preset);
    /// Null if there is no such row.
    QNBPresetRecordPtr presetAtRow(int row) const;
    bool reorderPresets(const QByteArray &archivedIndex, int row);
    void dropSelectedPresetAtRow(int row);
    /// At once, or with a dialog that shows the progress if it takes long.
    void importPresets(const QStringList &paths, int row);
    void insertImportedPresets(const QList<QNBPresetRecordPtr> &presets, int row);

    // Questions; whoever asks has to return at once if the pane was left for good before the answer.
    /// None in that case.
    std::optional<AlertPanel::Answer> answerTo(const AlertPanel &alert);
    /// No paths in that case, or if the user cancels.
    QStringList filesFor(const FilePanel &panel);

    // Helper
    void setUpHelperControl();
    /// The helper's bundle inside ours; empty if it is not there.
    QString helperPath() const;
    /// What shows the presets, for the desktop's settings.
    QString launcherCommand() const;
    bool isHelperRunning() const;
    /// Shows whether the helper runs, and what the button would do.
    void updateStatus();
    void showStatus(bool isRunning);
    /// Keeps the tab up to date, and schedules the offer of the file managers' plug-in.
    void setUpGeneralTab();
    void updateGeneralTab();

    // Settings
    void readPreferences();
    void takeSettings(const QNBSettings &settings);
    void tellUnread(const Result<> &read);
    void tellMended(bool isShown);
    bool isEdited() const;
    Result<> catchUpWithStored();
    /// The presets as they are shown, and what the controls say.
    QNBSettings shownSettings() const;
    void showOptions(bool isMenubarShown, const QNBKeyCombo &combo);
    QNBUnsavedState::Pane paneOfUnsavedState();
    /// Also tells the listener, and all other programs, that it was done; of a failure too.
    Result<> writePreferences();
    void notifyPresetsChanged();

    // Menus of content files and scripts
    void setUpFolderMenus();
    void folderMenuItemTriggered(QAction &menuItem);
    void addEntries(QMenu &menu, QNBFolderMenu::Kind kind, const QString &current);
    QString supportFolder(QNBFolderMenu::Kind kind) const;
    /// The same, made if it is missing: there is something to be put into it.
    QString madeSupportFolder(QNBFolderMenu::Kind kind) const;
    /// The selected preset's; empty for none.
    QString selectedScript() const;
    void showScript();

    // History
    void setUpHistory();
    void presetWillBeEditedAgain(const QNBPresetRecordPtr &preset) override;
    void changesWillBegin() override;
    void changesDidEnd() override;
    void childWasInserted(const QNBHierarchyItemPtr &parent, std::size_t index) override;
    void childWasRemoved(const QNBHierarchyItemPtr &parent, std::size_t index) override;
    void itemsDidChange(const QNBHierarchyItem::Children &items) override;
    Expansion expansionOf(const QNBHierarchyItemPtr &item) const override;
    void setExpansionOf(const QNBHierarchyItemPtr &item, const Expansion &expansion) override;
    void itemWasEditedAgain(const QNBHierarchyItemPtr &item) override;
    /// What the outline calls \a item: null for the root.
    OutlineItem outlineItem(const QNBHierarchyItemPtr &item) const;
    void revealItem(const QNBHierarchyItemPtr &item);

    // Selected preset
    void updateSelectionShadow();
    void presetValueDidChange(int index, const QString &key);
    void showEmptyState();
    void showDescription();
    QString descriptionText() const;
    void descriptionTextDidChange();
    /// What is typed from now on is another step of the history.
    void descriptionTypingDidEnd() { ++_descriptionTyping; }
    void fullyExpandHierarchy();

    // The items of the selected preset
    void insertItemInPresetHierarchy(bool isDirectory);
    /// Where a new item comes: into the selected folder, else beside the selected item.
    QNBHierarchyItemPtr levelForNewItem() const;
    bool canInsertItem() const;
    /// Keeps an index of the names in this folder, if they are many, and in no other; null for none at all.
    void keepChildNamesOf(const QNBHierarchyItemPtr &level);
    bool canMoveSelectedItem(QNBItemStep step) const;
    void setUpHierarchyActions();
    void validateHierarchyActions();
    /// What is dragged; null for what is not of this process, or no item at all.
    const QNBDraggedItem *draggedItem(const Pasteboard &pasteboard);
    QNBHierarchyItemPtr selectedHierarchyItem() const;
    const QNBHierarchyItem *itemOrRoot(const OutlineItem &item) const;

    // Attributes of the selected item
    using PermissionCheckboxes = std::array<QCheckBox *, QNBPermissions::numberOfBoxes>;
    /// The button of the outlet that \a name makes, letter by letter; null if there is none.
    QNBHoverButton *colorButton(const QString &name) const;
    QString nameOfColorNotHovered() const;
    PermissionCheckboxes permissionCheckboxes() const;
    void setUpPermissions();
    void setUpAttributeActions();
    void updateAttributeActions();
    /// Opens the contextual menu with the keyboard in the row of colours.
    void showLabelAndPermissions();
    /// Closes the contextual menu, if it is open.
    void cancelTracking();

    Services _services;
    /// Found once: what is loaded stays.
    mutable std::optional<Bundle> _bundle;
    PreferencePaneListener *_listener = nullptr;
    QNBUnsavedState _unsavedState;
    QPointer<QWidget> _mainView;
    QHash<QString, QObject *> _outlets;
    QHash<QString, QIcon> _images;
    /// The window with the keyboard as last heard; compared, never followed.
    const QWindow *_keyWindow = nullptr;
    bool _isSelected = false;
    /// Set if what is shown stands in for settings that could not be read: those of the backup of that time,
    /// or if it is invalid the default ones, with what the user has changed since.
    std::optional<QDateTime> _standIn;
    bool _descriptionPaneIsPlaced = false;
    int _descriptionTyping = 0;
    int _descriptionParagraphs = 0;
    /// What became of the last preset file; a drag has nobody to tell.
    Result<> _lastExport;
    /// Where the user took files from, or put them, last.
    QString _exchangeFolder;
    WorkspaceIcons _icons;
    QNBSharedLabels _sharedLabels;
    /// The dragged data that was read last, and what it was; asked for at every step of a drag.
    QByteArray _draggedData;
    std::optional<QNBDraggedItem> _draggedItem;

    TableView *_ui_presetListView = nullptr;
    ArrayController *_ui_presetListController = nullptr;
    QNBOutlineView *_ui_presetHierarchyView = nullptr;
    QLabel *_ui_hoveredColor = nullptr;
    QLabel *_ui_websiteLink = nullptr;
    QNBHoverButton *_ui_redButton = nullptr;
    QNBHoverButton *_ui_orangeButton = nullptr;
    QNBHoverButton *_ui_yellowButton = nullptr;
    QNBHoverButton *_ui_greenButton = nullptr;
    QNBHoverButton *_ui_blueButton = nullptr;
    QNBHoverButton *_ui_purpleButton = nullptr;
    QNBHoverButton *_ui_grayButton = nullptr;
    QNBHoverButton *_ui_clearColorButton = nullptr;
    QCheckBox *_ui_permGroupR = nullptr;
    QCheckBox *_ui_permGroupW = nullptr;
    QCheckBox *_ui_permGroupX = nullptr;
    QCheckBox *_ui_permOwnerR = nullptr;
    QCheckBox *_ui_permOwnerW = nullptr;
    QCheckBox *_ui_permOwnerX = nullptr;
    QCheckBox *_ui_permOthersR = nullptr;
    QCheckBox *_ui_permOthersW = nullptr;
    QCheckBox *_ui_permOthersX = nullptr;
    QPushButton *_ui_applyPermissionsRecursively = nullptr;
    QPlainTextEdit *_ui_presetDescription = nullptr;
    QSplitter *_leftColumnSplit = nullptr;
    QMenu *_ui_presetContextualMenu = nullptr;
    QMenu *_ui_scriptSelectionMenu = nullptr;
    QCheckBox *_ui_showMenubar = nullptr;
    KeyComboRecorder *_ui_shortcutRecorderControl = nullptr;
    QWidget *_ui_oldWindow = nullptr;
    QWidget *_ui_generalViewContainer = nullptr;
    QWidget *_ui_infoViewContainer = nullptr;
    QWidget *_ui_infoView = nullptr;
    QLabel *_ui_versionLabel = nullptr;
    QLabel *_ui_statusLabel = nullptr;
    QPushButton *_ui_startStopButton = nullptr;

    // Outlets that are this layout's own.
    QWidget *_colorRow = nullptr;
    QWidget *_permissionsGrid = nullptr;
    QLabel *_productName = nullptr;
    QWidget *_presetsTab = nullptr;
    QPushButton *_addPresetButton = nullptr;
    QPushButton *_removePresetButton = nullptr;
    QPushButton *_presetActionsButton = nullptr;
    QPushButton *_addFileButton = nullptr;
    QPushButton *_addFolderButton = nullptr;
    QPushButton *_itemActionsButton = nullptr;
    QPushButton *_scriptButton = nullptr;
    QMenu *_presetActionsMenu = nullptr;
    QMenu *_defaultPresetsMenu = nullptr;
    QMenu *_itemActionsMenu = nullptr;
    QMenu *_fileContentMenu = nullptr;
    QAction *_addPresetAction = nullptr;
    QAction *_renamePresetAction = nullptr;
    QAction *_removePresetAction = nullptr;
    QAction *_movePresetUpAction = nullptr;
    QAction *_movePresetDownAction = nullptr;
    QAction *_importPresetsAction = nullptr;
    QAction *_exportPresetAction = nullptr;
    QAction *_restoreEarlierStateAction = nullptr;
    QLabel *_scriptLabel = nullptr;
    QAction *_permissionsAction = nullptr;
    QAction *_undoAction = nullptr;
    QAction *_redoAction = nullptr;
    QAction *_addFileAction = nullptr;
    QAction *_addFolderAction = nullptr;
    QAction *_renameItemAction = nullptr;
    QAction *_deleteItemAction = nullptr;
    QAction *_moveItemUpAction = nullptr;
    QAction *_moveItemDownAction = nullptr;
    QAction *_moveItemIntoFolderAction = nullptr;
    QAction *_moveItemOutOfFolderAction = nullptr;
    QPushButton *_helpButton = nullptr;
    QCheckBox *_descriptionToggle = nullptr;
    QBoxLayout *_descriptionToggleLayout = nullptr;

    QNBPresetRecordPtr _selectedItem;
    QList<QNBPresetRecordPtr> _presets;
    QList<QNBHoverButton *> _hoverButtons;
    MenuViewAction *_colorRowAction = nullptr;
    /// No label, then the colours in the order of their buttons.
    QList<QAction *> _labelActions;
    /// In the order of permissionCheckboxes(), then the one for everything inside.
    QList<QAction *> _permissionActions;
    QNBHierarchyItemPtr _rootPresetHierarchyItem;
    std::weak_ptr<QNBHierarchyItem> _levelWithChildNames;
    bool showMenubar = true;
    QNBKeyCombo shortcutCombo;
    std::unique_ptr<QNBFileManagersRow> _fileManagersRow;
    std::unique_ptr<QNBHelperNotes> _helperNotes;

    /// Every change of presets, their trees and their order, one step per action of the user. Its commands
    /// act through the controller and this object: the first to go.
    QUndoStack _history;
};
