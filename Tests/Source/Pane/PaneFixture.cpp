// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include "Shared/Source/QNBShared.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <limits>

namespace {

constexpr char informationFile[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>org.quenby.Quenby</string>
<key>CFBundleShortVersionString</key><string>1.2.3</string>
</dict></plist>)";

constexpr char defaultPresets[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><array>
<dict><key>label</key><string>From the bundle</string></dict>
</array></plist>)";

const QString helperBundle = QStringLiteral("Quenby.prefPane/Contents/MacOS/QNBHelper.app");

constexpr char dragHandle[] = R"(<svg xmlns="http://www.w3.org/2000/svg" width="8" height="8"/>)";

} // namespace

DomainOutOfReach::DomainOutOfReach(const QString &folder)
    : folder_(folder)
{
    EXPECT_TRUE(QFile::rename(folder_, folder_ + QStringLiteral(".away")));
    QFile inTheWay(folder_);
    EXPECT_TRUE(inTheWay.open(QIODevice::WriteOnly));
}

DomainOutOfReach::~DomainOutOfReach()
{
    EXPECT_TRUE(QFile::remove(folder_));
    EXPECT_TRUE(QFile::rename(folder_ + QStringLiteral(".away"), folder_));
}

PaneFixture::PaneFixture()
{
    writeFile(QStringLiteral("Quenby.prefPane/Contents/Info.plist"), informationFile);
    writeFile(QStringLiteral("Quenby.prefPane/Contents/Resources/DefaultPresets.plist"), defaultPresets);
    writeFile(QStringLiteral("Quenby.prefPane/Contents/Resources/DragHandle.svg"), dragHandle);
    writeFile(QStringLiteral("Quenby.prefPane/Contents/Resources/QNB Default AppSupport/Scripts/Say.sh"),
              "#!/bin/sh\n");
}

PaneFixture::~PaneFixture()
{
    closePane();
}

QNBPresetRecordPtr PaneFixture::preset(const QString &label, const QStringList &names)
{
    QVariantList children;
    for (const QString &name : names) {
        QVariantMap item{{QStringLiteral("filename"), name}};
        if (name.endsWith(u'/')) {
            const QVariantMap inside{{QStringLiteral("filename"), QStringLiteral("inside")}};
            item = {{QStringLiteral("filename"), name.chopped(1)},
                    {QStringLiteral("isFolder"), true},
                    {QStringLiteral("children"), QVariantList{inside}}};
        }
        children.append(item);
    }
    auto record = std::make_shared<QNBPresetRecord>();
    record->setValueForKey(label, QNBPresetKey::label);
    record->setFileHierarchy(QNBHierarchyItem::initWithDictionary(
        QVariantMap{{QStringLiteral("isFolder"), true}, {QStringLiteral("children"), children}}));
    return record;
}

void PaneFixture::store(const QList<QNBPresetRecordPtr> &presets)
{
    QNBSettings settings;
    settings.presets = presets;
    const QNBPrefPanePref::Services world = services();
    const Result<> written = QNBSettingsStore::write(*world.preferences, settings);
    ASSERT_TRUE(written.ok) << qPrintable(written.error);
    storedDomain = domainOnDisk();
}

QByteArray PaneFixture::domainOnDisk() const
{
    QFile file(path(QStringLiteral("config/%1.plist").arg(QNBProductIdentifier())));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void PaneFixture::leavePane()
{
    expectNothingSavedSinceStoring();
    EXPECT_TRUE(pane->didUnselect());
    notifications.clear();
    storedDomain = domainOnDisk();
}

void PaneFixture::expectNothingSavedSinceStoring() const
{
    EXPECT_EQ(notifications, QStringList());
    EXPECT_TRUE(domainOnDisk() == storedDomain);
}

QNBSettings PaneFixture::stored() const
{
    QNBSettings settings;
    Preferences preferences(QNBProductIdentifier(), {.folder = path(QStringLiteral("config")),
                                                     .lockFolder = path(QStringLiteral("config"))});
    EXPECT_TRUE(QNBSettingsStore::read(preferences, std::nullopt, settings));
    return settings;
}

QNBPrefPanePref::Services PaneFixture::services()
{
    QDir().mkpath(path(QStringLiteral("config")));
    const Preferences::Options options{.folder = path(QStringLiteral("config")),
                                       .lockFolder = path(QStringLiteral("config")),
                                       .statesFolder = path(QStringLiteral("states"))};
    return {
        .preferences = std::make_unique<Preferences>(QNBProductIdentifier(), options),
        .postNotificationName = [this](const QString &name) { notifications << name; },
        .openURL =
            [this](const QUrl &url) {
                openedURLs << url;
                return true;
            },
        .allBundles =
            [this] {
                const auto bundle = Bundle::bundleWithPath(path(QStringLiteral("Quenby.prefPane")));
                return bundle ? QList<Bundle>{*bundle} : QList<Bundle>{};
            },
        .applicationSupportPath = path(QStringLiteral("support/Quenby")),
        .openFile =
            [this](const QString &file) {
                openedFiles << file;
                if (file == path(helperBundle)) {
                    helperSteps << QStringLiteral("open ") + file;
                    if (helperStarts)
                        startHelper();
                    return helperStarts;
                }
                return true;
            },
        .selectFile =
            [this](const QString &file) {
                selectedFiles << file;
                return true;
            },
        .runAlertPanel =
            [this](QWidget *parent, const AlertPanel &alert) {
                EXPECT_TRUE(parent && parent->window() == view->window()) << "in front of the pane's window";
                alerts << alert;
                EXPECT_FALSE(alertAnswers.isEmpty()) << qPrintable(alert.message);
                return alertAnswers.isEmpty() ? AlertPanel::Answer::Alternate : alertAnswers.takeFirst();
            },
        .runFilePanel =
            [this](QWidget *parent, const FilePanel &panel) {
                EXPECT_TRUE(parent && parent->window() == view->window()) << "in front of the pane's window";
                filePanels << panel;
                EXPECT_FALSE(filePanelAnswers.isEmpty()) << qPrintable(panel.title);
                return filePanelAnswers.isEmpty() ? QStringList() : filePanelAnswers.takeFirst();
            },
        .everyProcessNamed =
            [this](const QString &name) {
                ++processLooks;
                return name == u"QNBHelper" ? helpers : QList<TQProcess>();
            },
        .kill =
            [this](const TQProcess &process, int signal) {
                const ProcessSerialNumber number = process.processSerialNumber();
                helperSteps << QStringLiteral("signal %1 to %2").arg(signal).arg(number.low);
                if (helperEnds)
                    helpers.removeIf([&number](const TQProcess &helper) {
                        return helper.processSerialNumber() == number;
                    });
            },
        .addLoginItem =
            [this](const QString &item, bool openAtLogin) {
                helperSteps << (openAtLogin ? QStringLiteral("add ") : QStringLiteral("remove ")) + item;
            },
        .sleep =
            [this](std::chrono::microseconds duration) {
                helperSteps << QStringLiteral("sleep %1").arg(duration.count());
            },
        .watchHelper = [this](const std::function<void()> &changed) { helperChanged = changed; },
        .askHelper = [this](const auto &answered) { answered(helperState); },
        .installerServices =
            [this](Preferences &preferences, const std::optional<Bundle> &bundle,
                   const QNBPrefPanePref::Services::AlertAnswers &runAlertPanel) {
                auto world = CMMInstaller::Services::standard(preferences, bundle, runAlertPanel);
                world.systemVersion = [version = installerSystemVersion, lifetime = installerLifetime] {
                    return version;
                };
                world.homeFolder = QFile::encodeName(home.path());
                world.machineLibraryFolder = QFile::encodeName(path(QStringLiteral("Machine/Library")));
                world.askPlugin = [this](const QByteArray &, const QByteArray &command,
                                         const FileManagers::Answered &answered) {
                    pluginCommands << QString::fromLatin1(command);
                    answered(pluginAnswers.value(pluginCommands.constLast(), QString()));
                };
                return world;
            },
        .chooseEarlierState = [this](QWidget *, const QList<QNBEarlierState> &states,
                                     const QList<QNBPresetRecordPtr> &) -> std::optional<QNBEarlierState> {
            offeredStates = states;
            return chosenState ? std::optional(states.value(*chosenState)) : std::nullopt;
        },
        .recoveryFolder = path(recoveryFolder),
        .recoveryDelay = recoveryDelay,
        .unexplainedWait = unexplainedWait,
    };
}

QString PaneFixture::addHelper() const
{
    writeFile(helperBundle + QStringLiteral("/Contents/Info.plist"),
              "<plist version=\"1.0\"><dict/></plist>");
    return path(helperBundle);
}

TQProcess PaneFixture::startHelper()
{
    // Numbers that no process has.
    helpers << TQProcess::processWithProcessSerialNumber(
        {.high = 1, .low = std::numeric_limits<quint32>::max() - quint32(helpers.size())});
    return helpers.constLast();
}

void PaneFixture::openPane(QNBPrefPanePref::Services world)
{
    pane = std::make_unique<QNBPrefPanePref>(std::move(world));
    pane->setListener(&listener);
    view.reset(pane->loadMainView());
    ASSERT_TRUE(view);
    ASSERT_EQ(view.get(), pane->mainView());
    pane->mainViewDidLoad();
    constexpr auto fatal = QAbstractItemModelTester::FailureReportingMode::Fatal;
    listTester = std::make_unique<QAbstractItemModelTester>(list().model(), fatal);
    outlineTester = std::make_unique<QAbstractItemModelTester>(outline().model(), fatal);
    pane->didSelect();
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
}

void PaneFixture::closePane()
{
    pane.reset();
    view.reset();
}

void PaneFixture::loseKeyboardAndRegainIt()
{
    {
        QWidget other;
        other.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    }
    view->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
}

ArrayController &PaneFixture::controller() const
{
    return *outlet<ArrayController>(QStringLiteral("_ui_presetListController"));
}

TableView &PaneFixture::list() const
{
    return *outlet<TableView>(QStringLiteral("_ui_presetListView"));
}

OutlineView &PaneFixture::outline() const
{
    return *outlet<OutlineView>(QStringLiteral("_ui_presetHierarchyView"));
}

QStringList PaneFixture::outlineRows() const
{
    QStringList rows;
    for (int row = 0; row < outline().numberOfRows(); ++row)
        rows << static_cast<QNBHierarchyItem *>(outline().itemAtRow(row).get())->filename();
    return rows;
}

void PaneFixture::writeFile(const QString &name, const QByteArray &bytes) const
{
    const QString file = path(name);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(file).path()));
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    ASSERT_EQ(out.write(bytes), bytes.size());
}
