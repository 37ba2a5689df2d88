// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include "Source/Pane/QNBPaneLog.h"
#include "Source/Pane/QNBPresetListNames.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/HeightStrut.h"
#include "Toolkit/KeyComboRecorder.h"
#include "Toolkit/OutlineView.h"
#include "Toolkit/ReadablePlaceholders.h"
#include "Toolkit/TemplateImages.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <array>

namespace {

const QString selectionKeyPath = QStringLiteral("selection");
const QString dragHandleImageType = QStringLiteral("svg");
const QString versionKey = QStringLiteral("CFBundleShortVersionString");
const QString versionFormat = QStringLiteral("v%1");

constexpr std::array colorNames = {"red",  "orange", "yellow", "green",
                                   "blue", "purple", "gray",   "clearColor"};

constexpr qreal productNameScale = 1.6;

} // namespace

void QNBPrefPanePref::awakeFromNib()
{
    placeDetachedViews();
    new ReadablePlaceholders(*_presetsTab);
    setUpHistory();
    makePresetList();
    _ui_presetHierarchyView->setDataSource(this);
    connect(_ui_presetDescription, &QPlainTextEdit::textChanged, this,
            &QNBPrefPanePref::descriptionTextDidChange);
    makeContextualMenu();
    setUpHierarchyActions();
    setUpFolderMenus();

    updateSelectionShadow();
    connect(_ui_presetListController, &ArrayController::selectionChanged, this,
            [this] { observeValueForKeyPath(selectionKeyPath); });

    showWebsiteLink();
    _ui_websiteLink->installEventFilter(this);
    connect(_ui_websiteLink, &QLabel::linkActivated, this, &QNBPrefPanePref::openAppWebsite);

    const std::optional<Bundle> bundle = ourBundle();
    if (bundle) {
        QIcon handle(bundle->pathForResource(QNBDragHandleImage, dragHandleImageType));
        handle.setIsMask(true);
        _images.insert(QNBDragHandleImage, handle);
    }

    setUpColorButtons();
    setUpPermissions();
    setUpAttributeActions();
    _ui_presetHierarchyView->registerForDraggedTypes({QNBDraggedItem::pasteboardType});

    if (const Result<> copied =
            QNBSettingsStore::setUpApplicationSupport(bundle, _services.applicationSupportPath);
        !copied)
        qCWarning(lcPane) << "the application-support folder was not set up:" << copied.error;

    showOptions(showMenubar, shortcutCombo);

    _ui_versionLabel->setText(versionFormat.arg(configValueForKey(versionKey).toString()));
    setUpHelperControl();
    setUpGeneralTab();
}

void QNBPrefPanePref::placeDetachedViews()
{
    // The window's layout has one item, its content view.
    _ui_generalViewContainer->layout()->addWidget(_ui_oldWindow->layout()->itemAt(0)->widget());
    _ui_infoViewContainer->layout()->addWidget(_ui_infoView);

    QFont font = _productName->font();
    font.setPointSizeF(font.pointSizeF() * productNameScale);
    font.setBold(true);
    _productName->setFont(font);
    connect(_helpButton, &QPushButton::clicked, this, &QNBPrefPanePref::openHelpWebsite);

    // Beside the last row of the other column.
    _descriptionToggleLayout->addItem(new HeightStrut(*_scriptButton));

    // The pane gets its height when it is first laid out.
    _leftColumnSplit->installEventFilter(this);
    connect(_descriptionToggle, &QCheckBox::toggled, this,
            [this] { showHideDescriptionPane(_descriptionToggle->checkState()); });
    connect(_leftColumnSplit, &QSplitter::splitterMoved, this, [this] {
        const QSignalBlocker blocker(_descriptionToggle);
        _descriptionToggle->setChecked(_leftColumnSplit->sizes().constLast() > 0);
    });
}

void QNBPrefPanePref::setUpColorButtons()
{
    _hoverButtons.reserve(std::size(colorNames));
    for (const char *name : colorNames) {
        const QString title = QString::fromLatin1(name);
        QNBHoverButton *button = colorButton(title);
        button->setTitle(title);
        button->setHoverAction(&QNBHoverButtonDelegate::colorLabelButtonHovered);
        _hoverButtons.append(button);
    }
    for (QNBHoverButton *button : std::as_const(_hoverButtons))
        button->setDelegate(this);
    for (const QNBHoverButton *button : std::as_const(_hoverButtons))
        connect(button, &QNBHoverButton::clicked, this, [this, button] { colorLabelButtonClicked(*button); });
    QIcon cross = TemplateImages::stopProgress(Qt::black);
    cross.setIsMask(true);
    _ui_clearColorButton->setIcon(cross);
    _ui_clearColorButton->setTitle({});
}
