// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Shared/Source/QNBShared.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QCheckBox>
#include <QEnterEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>

namespace {

class QNBPrefPanePrefAwakeFromNib : public PaneFixture
{
};

const QStringList outletNames = {
    QStringLiteral("_ui_presetListView"),
    QStringLiteral("_ui_presetListController"),
    QStringLiteral("_ui_presetHierarchyView"),
    QStringLiteral("_ui_hoveredColor"),
    QStringLiteral("_ui_websiteLink"),
    QStringLiteral("_ui_redButton"),
    QStringLiteral("_ui_orangeButton"),
    QStringLiteral("_ui_yellowButton"),
    QStringLiteral("_ui_greenButton"),
    QStringLiteral("_ui_blueButton"),
    QStringLiteral("_ui_purpleButton"),
    QStringLiteral("_ui_grayButton"),
    QStringLiteral("_ui_clearColorButton"),
    QStringLiteral("_ui_permGroupR"),
    QStringLiteral("_ui_permGroupW"),
    QStringLiteral("_ui_permGroupX"),
    QStringLiteral("_ui_permOwnerR"),
    QStringLiteral("_ui_permOwnerW"),
    QStringLiteral("_ui_permOwnerX"),
    QStringLiteral("_ui_permOthersR"),
    QStringLiteral("_ui_permOthersW"),
    QStringLiteral("_ui_permOthersX"),
    QStringLiteral("_ui_applyPermissionsRecursively"),
    QStringLiteral("_ui_presetDescription"),
    QStringLiteral("_leftColumnSplit"),
    QStringLiteral("_ui_presetContextualMenu"),
    QStringLiteral("_ui_scriptSelectionMenu"),
    QStringLiteral("_ui_showMenubar"),
    QStringLiteral("_ui_shortcutRecorderControl"),
    QStringLiteral("_ui_oldWindow"),
    QStringLiteral("_ui_generalViewContainer"),
    QStringLiteral("_ui_infoViewContainer"),
    QStringLiteral("_ui_infoView"),
    QStringLiteral("_ui_versionLabel"),
    QStringLiteral("_ui_statusLabel"),
    QStringLiteral("_ui_startStopButton"),
};

TEST_F(QNBPrefPanePrefAwakeFromNib, EveryOutletIsInTheInterfaceDescription)
{
    openPane();
    for (const QString &name : outletNames)
        EXPECT_TRUE(view->findChild<QObject *>(name)) << qPrintable(name);
    EXPECT_TRUE(pane->connectOutlets(*view).isEmpty());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, AMissingOutletIsNamed)
{
    openPane();
    for (const QString &name : outletNames) {
        auto *object = view->findChild<QObject *>(name);
        object->setObjectName(QStringLiteral("_elsewhere"));
        EXPECT_EQ(pane->connectOutlets(*view), QStringList{name});
        object->setObjectName(name);
    }
    EXPECT_TRUE(pane->connectOutlets(*view).isEmpty());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, AnOutletOfAnotherKindIsMissing)
{
    openPane();
    auto *label = outlet<QLabel>(QStringLiteral("_ui_statusLabel"));
    auto *button = outlet<QPushButton>(QStringLiteral("_ui_startStopButton"));
    label->setObjectName(QStringLiteral("_ui_startStopButton"));
    button->setObjectName(QStringLiteral("_ui_statusLabel"));
    EXPECT_EQ(pane->connectOutlets(*view).size(), 2);
    label->setObjectName(QStringLiteral("_ui_statusLabel"));
    button->setObjectName(QStringLiteral("_ui_startStopButton"));
    EXPECT_TRUE(pane->connectOutlets(*view).isEmpty());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheSupportFolderIsThereBeforeTheHelperStarts)
{
    const QString helper = addHelper();
    bool wasThere = false;
    QNBPrefPanePref::Services world = services();
    const auto open = world.openFile;
    world.openFile = [&, open](const QString &file) {
        if (file == helper)
            wasThere = QFileInfo::exists(path(QStringLiteral("support/Quenby/Scripts/Say.sh")));
        return open(file);
    };
    openPane(std::move(world));
    ASSERT_TRUE(openedFiles.contains(helper));
    EXPECT_TRUE(wasThere);
}

TEST_F(QNBPrefPanePrefAwakeFromNib, OurBundleIsTheFirstOfThoseWithTheProductsIdentifier)
{
    constexpr char ours[] =
        "<plist><dict><key>CFBundleIdentifier</key><string>org.quenby.Quenby</string></dict></plist>";
    constexpr char others[] =
        "<plist><dict><key>CFBundleIdentifier</key><string>org.example.Other</string></dict></plist>";
    QList<Bundle> all;
    for (const auto &[name, information] :
         {std::pair{"other.prefPane", others}, std::pair{"first.prefPane", ours},
          std::pair{"second.prefPane", ours}}) {
        const QString bundle = QString::fromLatin1(name);
        writeFile(bundle + QStringLiteral("/Contents/Info.plist"), information);
        const auto made = Bundle::bundleWithPath(path(bundle));
        ASSERT_TRUE(made);
        all << *made;
    }
    const std::optional<Bundle> found = QNBPrefPanePref::ourBundle(all);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->resourcePath(), all.at(1).resourcePath());
    EXPECT_FALSE(QNBPrefPanePref::ourBundle({all.at(0)}));
}

TEST_F(QNBPrefPanePrefAwakeFromNib, WithoutAVersionTheLabelShowsTheLetterAlone)
{
    writeFile(QStringLiteral("Quenby.prefPane/Contents/Info.plist"),
              "<plist><dict><key>CFBundleIdentifier</key><string>org.quenby.Quenby</string></dict></plist>");
    openPane();
    EXPECT_EQ(outlet<QLabel>(QStringLiteral("_ui_versionLabel"))->text(), u"v");
}

TEST_F(QNBPrefPanePrefAwakeFromNib, DetachedViewsAreInTheirContainers)
{
    openPane();
    const auto *general = outlet<QWidget>(QStringLiteral("_ui_generalViewContainer"));
    const auto *info = outlet<QWidget>(QStringLiteral("_ui_infoViewContainer"));
    EXPECT_TRUE(general->isAncestorOf(outlet<QCheckBox>(QStringLiteral("_ui_showMenubar"))));
    EXPECT_TRUE(info->isAncestorOf(outlet<QLabel>(QStringLiteral("_ui_versionLabel"))));
    EXPECT_FALSE(outlet<QWidget>(QStringLiteral("_ui_oldWindow"))->isVisible());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheFirstPresetIsSelectedAndFullyExpanded)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("one"), QStringLiteral("two/")}),
           preset(QStringLiteral("B"), {QStringLiteral("three")})});
    openPane();
    EXPECT_EQ(list().selectedRow(), 0);
    EXPECT_EQ(outlineRows(),
              QStringList({QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("inside")}));
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheSelectionOfTheListIsObserved)
{
    store({preset(QStringLiteral("A")), preset(QStringLiteral("B"), {QStringLiteral("three")})});
    openPane();
    controller().setSelectionIndex(1);
    EXPECT_EQ(outlineRows(), QStringList({QStringLiteral("three")}));
    controller().setSelectionIndex(ArrayController::noIndex);
    EXPECT_TRUE(outlineRows().isEmpty());
    EXPECT_EQ(outline().placeholderText(), u"No preset selected");
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheWebSiteLinkIsBlueUnderlinedAndOpens)
{
    openPane();
    const auto *link = outlet<QLabel>(QStringLiteral("_ui_websiteLink"));
    EXPECT_TRUE(link->text().contains(u"#0000ff"));
    EXPECT_TRUE(link->text().contains(u"underline"));
    Q_EMIT const_cast<QLabel *>(link)->linkActivated(QStringLiteral("ignored"));
    pane->openHelpWebsite();
    EXPECT_EQ(openedURLs, QList<QUrl>({QUrl(QStringLiteral("https://quenby.example")),
                                       QUrl(QStringLiteral("https://quenby.example/help.php"))}));
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheLinkStaysReadableOnDarkGrounds)
{
    openPane();
    view->setPalette(QPalette(QColor(40, 40, 40)));
    const QString text = outlet<QLabel>(QStringLiteral("_ui_websiteLink"))->text();
    EXPECT_FALSE(text.contains(u"#0000ff"));
    EXPECT_TRUE(text.contains(u"#6cb2ff"));
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheDragHandleIsFoundByName)
{
    openPane();
    EXPECT_FALSE(pane->imageNamed(QStringLiteral("DragHandle")).isNull());
    EXPECT_TRUE(pane->imageNamed(QStringLiteral("DragHandle")).isMask())
        << "it is seen on every ground that texts are read on";
    EXPECT_TRUE(pane->imageNamed(QStringLiteral("draghandle")).isNull());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, ColourButtonsAreTitledByTheirColour)
{
    openPane();
    for (const char *name : {"red", "orange", "yellow", "green", "blue", "purple", "gray"}) {
        const QString title = QString::fromLatin1(name);
        const auto *button = outlet<QNBHoverButton>(QStringLiteral("_ui_%1Button").arg(title));
        EXPECT_EQ(button->title(), title);
        EXPECT_EQ(button->delegate(), pane.get());
        EXPECT_TRUE(button->icon().isNull());
    }
    const auto *clear = outlet<QNBHoverButton>(QStringLiteral("_ui_clearColorButton"));
    EXPECT_EQ(clear->title(), u"");
    EXPECT_EQ(clear->delegate(), pane.get());
    EXPECT_FALSE(clear->icon().isNull());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, HoveringShowsTheColoursName)
{
    auto record = preset(QStringLiteral("A"), {QStringLiteral("file")});
    record->fileHierarchy()->childAtIndex(0)->setColorName(QStringLiteral("BLUE"));
    store({record});
    openPane();
    auto *button = outlet<QNBHoverButton>(QStringLiteral("_ui_redButton"));
    const auto *name = outlet<QLabel>(QStringLiteral("_ui_hoveredColor"));
    QEnterEvent enter({}, {}, {});
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(button, &enter);
    EXPECT_EQ(name->text(), u"“Red”");
    QCoreApplication::sendEvent(button, &leave);
    EXPECT_EQ(name->text(), u"");
    outline().selectRow(0);
    QCoreApplication::sendEvent(button, &leave);
    EXPECT_EQ(name->text(), u"“Blue”");
    QCoreApplication::sendEvent(outlet<QNBHoverButton>(QStringLiteral("_ui_clearColorButton")), &enter);
    EXPECT_EQ(name->text(), u"");
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheApplicationSupportFolderIsSetUpOnTheFirstRunOnly)
{
    openPane();
    const QString script = path(QStringLiteral("support/Quenby/Scripts/Say.sh"));
    EXPECT_TRUE(QFileInfo::exists(script));
    closePane();
    ASSERT_TRUE(QFile::remove(script));
    openPane();
    EXPECT_FALSE(QFileInfo::exists(script));
}

TEST_F(QNBPrefPanePrefAwakeFromNib, TheVersionIsTheBundles)
{
    openPane();
    EXPECT_EQ(outlet<QLabel>(QStringLiteral("_ui_versionLabel"))->text(), u"v1.2.3");
    EXPECT_EQ(pane->configValueForKey(QStringLiteral("NoSuchKey")), QVariant());
}

TEST_F(QNBPrefPanePrefAwakeFromNib, MenusHaveTheirFixedItemsAndTags)
{
    openPane();
    const auto *scripts = outlet<QMenu>(QStringLiteral("_ui_scriptSelectionMenu"));
    const auto *contents = outlet<QMenu>(QStringLiteral("_fileContentMenu"));
    EXPECT_TRUE(scripts->title().contains(u"Script Selection"));
    EXPECT_TRUE(contents->title().contains(u"File Content"));
    for (const QMenu *menu : {scripts, contents}) {
        ASSERT_EQ(menu->actions().size(), 3);
        EXPECT_EQ(menu->actions().constFirst()->property("tag").toInt(), 2100);
    }
    const QList<QPair<QString, int>> tags = {
        {QStringLiteral("OwnerR"), 400}, {QStringLiteral("OwnerW"), 200}, {QStringLiteral("OwnerX"), 100},
        {QStringLiteral("GroupR"), 40},  {QStringLiteral("GroupW"), 20},  {QStringLiteral("GroupX"), 10},
        {QStringLiteral("OthersR"), 4},  {QStringLiteral("OthersW"), 2},  {QStringLiteral("OthersX"), 1}};
    for (const auto &[name, tag] : tags)
        EXPECT_EQ(outlet<QCheckBox>(QStringLiteral("_ui_perm") + name)->property("tag").toInt(), tag);
}

TEST_F(QNBPrefPanePrefAwakeFromNib, OurBundleIsTheFirstWithOurIdentifier)
{
    writeFile(
        QStringLiteral("Other.prefPane/Contents/Info.plist"),
        "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>a.b</string></dict></plist>");
    const auto other = Bundle::bundleWithPath(path(QStringLiteral("Other.prefPane")));
    const auto ours = Bundle::bundleWithPath(path(QStringLiteral("Quenby.prefPane")));
    ASSERT_TRUE(other && ours);
    EXPECT_EQ(QNBPrefPanePref::ourBundle({*other, *ours})->bundlePath(), ours->bundlePath());
    EXPECT_FALSE(QNBPrefPanePref::ourBundle({*other}));
    EXPECT_FALSE(QNBPrefPanePref::ourBundle({}));
}

TEST_F(QNBPrefPanePrefAwakeFromNib, ControlsCanBeReachedAndAreNamed)
{
    openPane();
    const QList<QWidget *> widgets = view->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        const bool isControl = widget->objectName().startsWith(u'_') &&
                               widget->focusPolicy() != Qt::NoFocus && !qobject_cast<const QLabel *>(widget);
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        if (isControl && widget->objectName() != u"_tabs") {
            EXPECT_FALSE(widget->accessibleName().isEmpty() && (!button || button->text().isEmpty()))
                << qPrintable(widget->objectName());
        }
    }
}

} // namespace
