// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Platform/LineText.h"
#include "Source/Editing/QNBAttributeCommands.h"
#include "Source/Editing/QNBPresetListCommands.h"
#include "Source/Pane/QNBInterfaceProperties.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/PlainText.h"
#include "Toolkit/ScrollingMenu.h"

#include <QAction>
#include <QCursor>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace {

/// What the titles of the two menus contain.
const QString fileContentTitle = QStringLiteral("File Content");
const QString scriptSelectionTitle = QStringLiteral("Script Selection");

/// At the top of each menu.
constexpr qsizetype fixedItems = 3;
/// The fixed item that stands for no file, in both.
constexpr int noFileTag = 2100;

const QString fileContentItemClickedAction = QStringLiteral("fileContentItemClicked");
const QString scriptsItemClickedAction = QStringLiteral("scriptsItemClicked");
const QString openFileContentFolderAction = QStringLiteral("openFileContentFolder");
const QString openScriptsFolderAction = QStringLiteral("openScriptsFolder");

/// Longer texts lose their middle. In characters of average width.
constexpr int longestEntry = 60;
constexpr int longestButtonText = 30;

/// Keeps the text that an item has while its folder is not empty.
constexpr char usualTextProperty[] = "usualText";
/// Keeps the tool tip that the button has while its text is not shortened.
constexpr char usualToolTipProperty[] = "usualToolTip";

/// \a path as it fits into \a characters on \a widget.
QString shortened(const QString &path, const QWidget &widget, int characters)
{
    QString text = lineText(path);
    // Text this short is never too wide; most is, and measuring takes its time.
    if (text.size() > characters) {
        const QFontMetrics metrics = widget.fontMetrics();
        text = metrics.elidedText(text, Qt::ElideMiddle, characters * metrics.averageCharWidth());
    }
    return text;
}

/// With nothing in \a text taken for a mnemonic.
QString literal(QString text)
{
    return text.replace(u'&', QStringLiteral("&&"));
}

bool standsForNoFile(const QAction &menuItem)
{
    return menuItem.property(QNBInterfaceProperty::tag).toInt() == noFileTag;
}

/// The path that an entry stands for; empty for the no-file item.
QString pathOf(const QAction &menuItem)
{
    return standsForNoFile(menuItem) ? QString() : menuItem.data().toString();
}

void trimToFixedItems(const QMenu &menu)
{
    const QList<QAction *> items = menu.actions();
    for (qsizetype index = items.size() - 1; index >= fixedItems; --index)
        delete items.at(index);
}

/// States what is chosen, and in the text of the item that opens the folder whether there is a choice at all.
void updateFixedItems(const QMenu &menu, bool isNothingChosen, bool isFolderEmpty)
{
    const QList<QAction *> items = menu.actions().mid(0, fixedItems);
    for (QAction *item : items) {
        if (standsForNoFile(*item)) {
            item->setCheckable(true);
            item->setChecked(isNothingChosen);
        }
        const QVariant textWhenEmpty = item->property(QNBInterfaceProperty::textWhenEmpty);
        if (textWhenEmpty.isValid())
            item->setText((isFolderEmpty ? textWhenEmpty : item->property(usualTextProperty)).toString());
    }
}

} // namespace

void QNBPrefPanePref::setUpFolderMenus()
{
    for (QMenu *menu : {_fileContentMenu, _ui_scriptSelectionMenu}) {
        ScrollingMenu::makeOf(*menu);
        menu->setToolTipsVisible(true);
        const QList<QAction *> items = menu->actions();
        for (QAction *item : items)
            item->setProperty(usualTextProperty, item->text());
        connect(menu, &QMenu::aboutToShow, this, [this, menu] {
            menuNeedsUpdate(*menu);
            validateMenu(*menu);
        });
        connect(menu, &QMenu::triggered, this, [this](QAction *item) { folderMenuItemTriggered(*item); });
    }
    _scriptButton->setProperty(usualToolTipProperty, _scriptButton->toolTip());
    _scriptButton->setMenu(_ui_scriptSelectionMenu);
    for (QWidget *widget : {static_cast<QWidget *>(_scriptButton), static_cast<QWidget *>(_scriptLabel)}) {
        widget->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(widget, &QWidget::customContextMenuRequested, this,
                [this, widget] { popUpScriptSelectionMenu(*widget); });
    }
}

void QNBPrefPanePref::folderMenuItemTriggered(QAction &menuItem)
{
    // The states say what is chosen when the menu opens; a click as such changes none of them.
    if (menuItem.isCheckable())
        menuItem.toggle();
    const QString action = menuItem.property(QNBInterfaceProperty::action).toString();
    if (action == fileContentItemClickedAction)
        fileContentItemClicked(menuItem);
    else if (action == scriptsItemClickedAction)
        scriptsItemClicked(menuItem);
    else if (action == openFileContentFolderAction)
        openFileContentFolder();
    else if (action == openScriptsFolderAction)
        openScriptsFolder();
}

void QNBPrefPanePref::menuNeedsUpdate(QMenu &menu)
{
    if (menu.title().contains(fileContentTitle)) {
        trimToFixedItems(menu);
        const QNBHierarchyItemPtr item = selectedHierarchyItem();
        if (item && !item->isDirectory())
            addEntries(menu, QNBFolderMenu::Kind::FileContent, item->contentFilename());
    } else if (menu.title().contains(scriptSelectionTitle)) {
        trimToFixedItems(menu);
        if (_selectedItem)
            addEntries(menu, QNBFolderMenu::Kind::Scripts, selectedScript());
    }
}

void QNBPrefPanePref::addEntries(QMenu &menu, QNBFolderMenu::Kind kind, const QString &current)
{
    const QString folder = supportFolder(kind);
    const QString &action =
        kind == QNBFolderMenu::Kind::Scripts ? scriptsItemClickedAction : fileContentItemClickedAction;
    QFont fontOfCurrent = menu.font();
    fontOfCurrent.setBold(true);

    const QStringList paths = QNBFolderMenu::entries(folder, kind);
    for (const QString &path : paths) {
        const QString text = shortened(path, menu, longestEntry);
        auto *item = new QAction(_icons.iconForFile(folder + u'/' + path), literal(text), &menu);
        item->setIconVisibleInMenu(true);
        item->setData(path);
        item->setProperty(QNBInterfaceProperty::action, action);
        item->setCheckable(true);
        if (path == current) {
            item->setChecked(true);
            // Beside an icon, not every style shows a check mark that is seen at a glance.
            item->setFont(fontOfCurrent);
        }
        if (text != path)
            item->setToolTip(PlainText::toolTip(path));
        menu.addAction(item);
    }
    updateFixedItems(menu, current.isEmpty(), paths.isEmpty());
    validateMenu(menu);
}

void QNBPrefPanePref::fileContentItemClicked(const QAction &menuItem)
{
    const QNBHierarchyItemPtr item = selectedHierarchyItem();
    if (!item || item->isDirectory())
        return;
    const QString path = pathOf(menuItem);
    if (path == item->contentFilename())
        return;
    _history.push(new QNBSetItemTextCommand(
        *this, _selectedItem, item, QNBSetItemTextCommand::contentFilename, path, tr("File Content")));
}

void QNBPrefPanePref::scriptsItemClicked(const QAction &menuItem)
{
    if (!_selectedItem)
        return;
    const QString path = pathOf(menuItem);
    if (!standsForNoFile(menuItem)) {
        const QFileInfo script(supportFolder(QNBFolderMenu::Kind::Scripts) + u'/' + path);
        // Of folders, bundles alone hold a program.
        const QFileInfo program(script.isDir() ? Bundle::programOf(script.filePath()) : script.filePath());
        // The helper runs no program that a bundle has elsewhere.
        const bool isElsewhere =
            script.isDir() && !program.canonicalFilePath().startsWith(script.canonicalFilePath() + u'/');
        if (!program.isExecutable() || isElsewhere) {
            const QString title = program.isExecutable() ? tr("Script Program Lies Elsewhere")
                                                         : tr("Script File not Executable");
            const QString message =
                program.isExecutable()
                    ? tr("The program of '%1' lies outside of it, behind a link, and is not run. Please put "
                         "the program itself there.")
                    : tr("Script file '%1' is not set to be executable. Please make sure it is set to be "
                         "executable (chmod +x).");
            answerTo({.title = title,
                      .message = message.arg(lineText(script.fileName())),
                      .defaultButton = tr("OK")});
            return;
        }
    }
    if (path == selectedScript())
        return;
    _history.push(new QNBSetPresetValueCommand(*_ui_presetListController, _selectedItem,
                                               QNBPresetKey::scriptFile, path, tr("Script")));
}

void QNBPrefPanePref::popUpScriptSelectionMenu(const QWidget &sender)
{
    const QPoint pointer = QCursor::pos();
    const bool isPointedAt = sender.rect().contains(sender.mapFromGlobal(pointer));
    _ui_scriptSelectionMenu->popup(isPointedAt ? pointer : sender.mapToGlobal(sender.rect().bottomLeft()));
}

void QNBPrefPanePref::openScriptsFolder()
{
    _services.openFile(madeSupportFolder(QNBFolderMenu::Kind::Scripts));
}

void QNBPrefPanePref::openFileContentFolder()
{
    _services.selectFile(madeSupportFolder(QNBFolderMenu::Kind::FileContent));
}

QString QNBPrefPanePref::supportFolder(QNBFolderMenu::Kind kind) const
{
    const QString &name = kind == QNBFolderMenu::Kind::Scripts ? QNBFolderMenu::scriptsFolder
                                                               : QNBFolderMenu::fileContentFolder;
    return _services.applicationSupportPath + u'/' + name;
}

QString QNBPrefPanePref::madeSupportFolder(QNBFolderMenu::Kind kind) const
{
    QString folder = supportFolder(kind);
    if (!QDir().mkpath(folder))
        qCWarning(lcPane) << "the folder could not be made:" << folder;
    return folder;
}

QString QNBPrefPanePref::selectedScript() const
{
    const QVariant script = _selectedItem ? _selectedItem->valueForKey(QNBPresetKey::scriptFile) : QVariant();
    return script.typeId() == QMetaType::QString ? script.toString() : QString();
}

void QNBPrefPanePref::showScript()
{
    const QString script = selectedScript();
    const QString text = shortened(script, *_scriptButton, longestButtonText);
    _scriptButton->setText(text.isEmpty() ? tr("No Script") : literal(text));
    _scriptButton->setAccessibleDescription(lineText(script));
    _scriptButton->setToolTip(text == script ? _scriptButton->property(usualToolTipProperty).toString()
                                             : PlainText::toolTip(script));
}
