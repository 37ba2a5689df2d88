// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/IncludeRules.h"

#include <QRegularExpression>
#include <gmock/gmock.h>

using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

SourceFile including(const char *path, const char *include)
{
    return {QString::fromLatin1(path),
            QStringLiteral("// a comment\n#include %1\n").arg(QLatin1String(include))};
}

} // namespace

TEST(IncludeRulesTest, RoomsIncludeInOneDirection)
{
    const QList<SourceFile> files = SourceTree::files();
    ASSERT_GT(files.size(), 40);
    for (const SourceFile &file : files) {
        for (const QString &violation : IncludeRules::violationsOfDirection(file))
            ADD_FAILURE() << violation.toStdString();
    }
}

TEST(IncludeRulesTest, TheCoreIncludesNoWidget)
{
    const QSet<QString> headers = IncludeRules::widgetHeaders();
    for (const SourceFile &file : SourceTree::files()) {
        for (const QString &violation : IncludeRules::violationsOfCoreWithoutWidgets(file, headers))
            ADD_FAILURE() << violation.toStdString();
    }
}

TEST(IncludeRulesTest, TheModelLibraryHoldsTheModelAndNothingElse)
{
    QString buildRules;
    for (const SourceFile &file : SourceTree::files()) {
        if (file.path == u"Source/CMakeLists.txt")
            buildRules = file.text;
    }
    static const QRegularExpression library(QStringLiteral("add_library\\(quenby-model STATIC([^)]*)\\)"));
    const QStringList sources =
        library.match(buildRules).captured(1).simplified().split(u' ', Qt::SkipEmptyParts);
    ASSERT_THAT(sources, Contains(QStringLiteral("Model/QNBHierarchyItem.h")));
    EXPECT_THAT(sources, ::testing::Each(::testing::ResultOf(
                             [](const QString &source) { return source.section(u'/', 0, 0); },
                             QStringLiteral("Model"))));
}

TEST(IncludeRulesTest, AWrongDirectionIsCaught)
{
    for (const auto &[path, include] : std::initializer_list<std::pair<const char *, const char *>>{
             {"Platform/Desktop/Bundle.cpp", "\"Shared/Source/QNBShared.h\""},
             {"Platform/Desktop/Bundle.cpp", "\"Toolkit/AlertPanel.h\""},
             {"Platform/LineText.cpp", "\"Platform/Files/FileLayer.h\""},
             {"Platform/LineText.cpp", "\"Files/FileLayer.h\""},
             {"Helper/main.cpp", "\"Source/New.h\""},
             {"Platform/Files/FileLayer.cpp", "\"Platform/Desktop/DesktopFolders.h\""},
             {"Platform/Processes/ProcessTable.cpp", "\"Platform/PropertyLists/PropertyList.h\""},
             {"Source/Controls/ZBIconCell.cpp", "\"Source/Model/QNBHierarchyItem.h\""},
             {"Source/Editing/QNBEditCommand.cpp", "\"Source/System/TQProcess.h\""},
             {"Platform/Desktop/Bundle.cpp", "<Source/Model/QNBHierarchyItem.h>"},
             {"Shared/Source/QNBShared.h", "\"Source/Model/QNBHierarchyItem.h\""},
             {"Source/Model/QNBHierarchyItem.cpp", "\"Source/Pane/QNBPrefPanePref.h\""},
             {"Source/Model/QNBHierarchyItem+Dictionary.cpp", "\"Source/Pane/QNBPrefPanePref.h\""},
             {"Source/Model/QNBSettingsStore.h", "\"Toolkit/ArrayController.h\""},
             {"Source/Pane/QNBPrefPanePref.cpp", "\"Hosting/PaneLoader.h\""},
             {"Keyboard/LayoutKeys.cpp", "\"Toolkit/AlertPanel.h\""},
             {"Toolkit/OutlineView.cpp", "\"Source/Model/QNBHierarchyItem.h\""},
             {"Hosting/PaneLoader.cpp", "\"Host/HostWindow.h\""},
             {"Hosting/PaneLoader.cpp", "\"Toolkit/FilePanel.h\""},
             {"Host/main.cpp", "\"Toolkit/OutlineView.h\""},
             {"Host/main.cpp", "\"Source/Pane/QNBPrefPanePref.h\""},
             {"SystemSettings/PanePage.cpp", "\"Host/HostWindow.h\""},
             {"SystemSettings/PanePage.cpp", "\"Source/Pane/QNBPrefPanePref.h\""},
             {"Helper/main.cpp", "\"Source/Pane/QNBPrefPanePref.h\""},
             {"Helper/Creation/CreationPlan.cpp", "\"Helper/Presets.h\""},
             {"ContextMenu/main.cpp", "\"Toolkit/AlertPanel.h\""},
             {"Platform/Desktop/Bundle.cpp", "\"Tests/Session/PrivateBus.h\""},
             {"Source/Pane/QNBPrefPanePref.cpp", "\"../Hosting/PaneLoader.h\""}}) {
        const QStringList violations = IncludeRules::violationsOfDirection(including(path, include));
        ASSERT_THAT(violations, SizeIs(1)) << path << " with " << include;
        EXPECT_TRUE(violations[0].startsWith(QLatin1String(path) + QStringLiteral(":2 includes ")))
            << violations[0].toStdString();
    }
}

TEST(IncludeRulesTest, AFileInNoRoomIsCaught)
{
    for (const char *path : {"Source/New.h", "Source/Unnamed/New.cpp", "Shared/New.h"})
        EXPECT_THAT(IncludeRules::violationsOfDirection(including(path, "<QString>")), SizeIs(1)) << path;
    EXPECT_THAT(IncludeRules::violationsOfDirection(including("Source/CMakeLists.txt", "<QString>")),
                IsEmpty());
}

TEST(IncludeRulesTest, ARightDirectionPasses)
{
    for (const auto &[path, include] : std::initializer_list<std::pair<const char *, const char *>>{
             {"Platform/Desktop/Bundle.cpp", "\"Platform/Desktop/Bundle.h\""},
             {"Shared/Source/QNBShared.cpp", "\"Platform/Desktop/Workspace.h\""},
             {"Source/Model/QNBHierarchyItem.cpp", "\"Shared/Source/CocoaCryptoHashing.h\""},
             {"Source/Pane/QNBPrefPanePref+Private.cpp", "\"Toolkit/OutlineView.h\""},
             {"Source/Pane/QNBPrefPanePref.cpp", "\"moc_QNBPrefPanePref.cpp\""},
             {"Platform/Preferences/Preferences.cpp", "\"Platform/PropertyLists/PropertyList.h\""},
             {"Source/Pane/QNBPrefPanePref.cpp", "\"Source/Editing/QNBEditCommand.h\""},
             {"Toolkit/OutlineView.cpp", "<QTreeView>"},
             {"Hosting/PaneSession.cpp", "\"Toolkit/NoticeStrip.h\""},
             {"Host/main.cpp", "\"Toolkit/PreferencePane.h\""},
             {"Host/main.cpp", "\"Hosting/PaneFinder.h\""},
             {"SystemSettings/PanePage.cpp", "\"Hosting/PaneSession.h\""},
             {"Helper/main.cpp", "\"Source/Model/QNBPresetRecord.h\""},
             {"Helper/main.cpp", "\"Helper/Creation/CreationPlan.h\""},
             {"Helper/Creation/CreationPlan.cpp", "\"Shared/Source/QNBShared.h\""},
             {"Tests/Source/Model/QNBHierarchyItemTest.cpp", "\"Hosting/PaneLoader.h\""}})
        EXPECT_THAT(IncludeRules::violationsOfDirection(including(path, include)), IsEmpty())
            << path << " with " << include;
}

TEST(IncludeRulesTest, AWidgetInTheCoreIsCaught)
{
    const QSet<QString> headers = IncludeRules::widgetHeaders();
    for (const char *path : {"Platform/Desktop/Bundle.h", "Shared/Source/QNBShared.cpp",
                             "Source/Model/QNBHierarchyItem.cpp", "Source/Model/QNBPresetRecord.h",
                             "Source/Model/QNBSettingsStore.cpp", "Source/Model/QNBPresetFile.cpp",
                             "Helper/Creation/CreationPlan.h", "ContextMenu/FileManagerEntries.cpp"}) {
        for (const char *include : {"<QWidget>", "<QApplication>", "<QGuiApplication>", "<QIcon>", "<QColor>",
                                    "<qcolor.h>", "<QtWidgets/QTreeView>", "<QtGui>", "<QSvgRenderer>"})
            EXPECT_THAT(IncludeRules::violationsOfCoreWithoutWidgets(including(path, include), headers),
                        SizeIs(1))
                << path << " with " << include;
        for (const char *include :
             {"<QString>", "<QObject>", "<QtCore/QTimer>", "<QDBusConnection>", "<memory>"})
            EXPECT_THAT(IncludeRules::violationsOfCoreWithoutWidgets(including(path, include), headers),
                        IsEmpty())
                << path << " with " << include;
    }
}

TEST(IncludeRulesTest, AWidgetOutsideTheCorePasses)
{
    const QSet<QString> headers = IncludeRules::widgetHeaders();
    for (const char *path :
         {"Toolkit/OutlineView.h", "Source/Pane/QNBPrefPanePref.cpp", "Host/main.cpp", "Helper/main.cpp"})
        EXPECT_THAT(IncludeRules::violationsOfCoreWithoutWidgets(including(path, "<QWidget>"), headers),
                    IsEmpty());
}
