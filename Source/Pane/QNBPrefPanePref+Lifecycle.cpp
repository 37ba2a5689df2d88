// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Controls/ZBIconCell.h"
#include "Source/Pane/QNBPaneLog.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"
#include "ui_QNBPrefPane.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QTimer>
#include <QWindow>

namespace {

const QString presetListControllerName = QStringLiteral("_ui_presetListController");
constexpr int hierarchyIndentation = 18;
constexpr QSize hierarchyIconSize(16, 16);

/// The view that hosts show; asks for room enough to work in.
class PaneView final : public QWidget
{
public:
    QSize sizeHint() const override
    {
        constexpr QSize comfortable(720, 520);
        return QWidget::sizeHint().expandedTo(comfortable);
    }
};

/// Menus, tool tips and the like come and go without their window losing the keyboard.
bool isKeyWindow(const QWindow *window)
{
    const Qt::WindowType type = window ? window->type() : Qt::Window;
    return type != Qt::Popup && type != Qt::ToolTip;
}

} // namespace

QWidget *QNBPrefPanePref::loadMainView()
{
    readPreferences();

    auto view = std::make_unique<PaneView>();
    Ui::QNBPrefPane description;
    description.setupUi(view.get());
    auto *controller = new ArrayController(view.get());
    controller->setObjectName(presetListControllerName);

    const QStringList missing = connectOutlets(*view);
    if (!missing.isEmpty()) {
        qCCritical(lcPane) << "the interface description lacks" << missing;
        return nullptr;
    }
    _mainView = view.release();
    // Whoever shows the view gives the keyboard to the list: the keys for presets and items work at once.
    _mainView->setFocusProxy(_ui_presetListView);
    awakeFromNib();
    return _mainView;
}

void QNBPrefPanePref::mainViewDidLoad()
{
    _ui_presetHierarchyView->setIndentation(hierarchyIndentation);
    _ui_presetHierarchyView->setIconSize(hierarchyIconSize);
    auto cell = std::make_unique<ZBIconCell>();
    cell->setEditable(true);
    _ui_presetHierarchyView->setDataCell(std::move(cell));
    buildTreesWhenIdle();
    // Else when what is stored is known.
    if (!_standIn)
        _unsavedState.offerWhatWasLeft();
}

/// The trees of presets that were not looked at yet, one each time the user does nothing, so that neither the
/// start nor the first save waits for all of them.
void QNBPrefPanePref::buildTreesWhenIdle()
{
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [timer, presets = _presets]() mutable {
        if (presets.isEmpty())
            timer->deleteLater();
        else
            static_cast<void>(presets.takeLast()->fileHierarchy());
    });
    timer->start();
}

void QNBPrefPanePref::didSelect()
{
    if (std::exchange(_isSelected, true))
        return;
    // It is shown. With a proxy that comes behind the tabs, Tab would never reach them.
    _mainView->setFocusProxy(nullptr);
    QWindow *window = QGuiApplication::focusWindow();
    _keyWindow = isKeyWindow(window) ? window : nullptr;
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &QNBPrefPanePref::focusWindowChanged);
}

Result<> QNBPrefPanePref::didUnselect()
{
    _isSelected = false;
    disconnect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &QNBPrefPanePref::focusWindowChanged);
    endEditing();
    keepChildNamesOf(nullptr);
    const Result<> saved = writePreferences();
    if (!saved)
        _unsavedState.keep();
    return saved;
}

Result<> QNBPrefPanePref::save()
{
    endEditing();
    return writePreferences();
}

void QNBPrefPanePref::windowDidResignKey()
{
    // The listener has heard of a failure.
    (void)save();
}

void QNBPrefPanePref::focusWindowChanged(QWindow *window)
{
    if (!isKeyWindow(window) || window == _keyWindow)
        return;
    const bool hadKeyWindow = _keyWindow != nullptr;
    _keyWindow = window;
    if (hadKeyWindow)
        windowDidResignKey();
}

void QNBPrefPanePref::endEditing()
{
    if (!_mainView)
        return;
    _ui_presetListView->endEditing();
    _ui_presetHierarchyView->endEditing();
    // The description's text is taken over as it is typed; what an input method still composes is not.
    QGuiApplication::inputMethod()->commit();
}
