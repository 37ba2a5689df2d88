// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/QNBSettingsStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const QString domain = QStringLiteral("org.quenby.Quenby");

QVariantMap item(const QString &name)
{
    return {{QStringLiteral("filename"), name}};
}

QVariantMap record(const QString &label)
{
    return {{QNBPresetKey::label, label},
            {QNBPresetKey::fileHierarchy,
             QVariantMap{{QStringLiteral("isFolder"), true},
                         {QStringLiteral("permissions"), QStringLiteral("764")},
                         {QStringLiteral("children"), QVariantList{item(QStringLiteral("inside"))}}}}};
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

void writePropertyList(const QString &path, const QVariant &value)
{
    const PropertyList::WriteResult written = PropertyList::write(value, PropertyList::Form::XML);
    ASSERT_TRUE(written) << qPrintable(written.error);
    writeFile(path, *written.bytes);
}

QStringList labels(const QNBSettings &settings)
{
    QStringList result;
    for (const QNBPresetRecordPtr &preset : settings.presets)
        result << preset->label();
    return result;
}

bool containsKey(const QVariant &value, const QString &key)
{
    if (value.typeId() == QMetaType::QVariantList) {
        const QVariantList list = value.toList();
        return std::any_of(list.begin(), list.end(), [&](const QVariant &v) { return containsKey(v, key); });
    }
    const QVariantMap map = value.toMap();
    return map.contains(key) ||
           std::any_of(map.begin(), map.end(), [&](const QVariant &v) { return containsKey(v, key); });
}

} // namespace

/// A domain and a pane bundle with default presets, in a temporary folder.
class QNBSettingsStoreTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder_.isValid());
        const QString contents = folder_.filePath(QStringLiteral("Quenby.prefPane/Contents"));
        writePropertyList(contents + QStringLiteral("/Info.plist"),
                          QVariantMap{{QStringLiteral("CFBundleIdentifier"), domain},
                                      {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2")}});
        writePropertyList(
            resource(QStringLiteral("DefaultPresets.plist")),
            QVariantList{record(QStringLiteral("Default A")), record(QStringLiteral("Default B"))});
    }

    QString resource(const QString &name) const
    {
        return folder_.filePath(QStringLiteral("Quenby.prefPane/Contents/Resources/")) + name;
    }
    std::optional<Bundle> bundle() const
    {
        return Bundle::bundleWithPath(folder_.filePath(QStringLiteral("Quenby.prefPane")));
    }
    Preferences::Options options() const
    {
        Preferences::Options result;
        result.folder = folder_.path();
        result.lockFolder = folder_.path();
        return result;
    }
    QString domainPath() const { return folder_.filePath(domain + QStringLiteral(".plist")); }
    QVariantMap domainOnDisk() const
    {
        QFile file(domainPath());
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        const PropertyList::ReadResult result = PropertyList::read(file.readAll());
        EXPECT_TRUE(result) << qPrintable(result.error);
        return result.value.value_or(QVariant()).toMap();
    }
    QNBSettings readSettings() const
    {
        Preferences preferences(domain, options());
        QNBSettings settings;
        EXPECT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
        return settings;
    }
    Result<> writeSettings(const QNBSettings &settings) const
    {
        Preferences preferences(domain, options());
        return QNBSettingsStore::write(preferences, settings);
    }
    QStringList keptAside() const
    {
        return QDir(folder_.path()).entryList({QStringLiteral("*.plist.before-*")}, QDir::Files);
    }

    QTemporaryDir folder_;
};

TEST_F(QNBSettingsStoreTest, FirstRunWithAnEmptyDomainLoadsTheDefaultPresets)
{
    Preferences preferences(domain, options());
    QNBSettings settings;
    settings.showMenubar = false;
    EXPECT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_EQ(labels(settings), (QStringList{QStringLiteral("Default A"), QStringLiteral("Default B")}));
    EXPECT_TRUE(settings.showMenubar);
    EXPECT_EQ(settings.shortcutCombo, QNBKeyCombo());
    EXPECT_EQ(preferences.copyAppValue(QNBPreferenceKey::showMenubar), QVariant(true));
}

TEST_F(QNBSettingsStoreTest, AfterTheFirstWriteTheDefaultsAreNeverReadAgain)
{
    ASSERT_TRUE(writeSettings(QNBSettings()));
    EXPECT_EQ(domainOnDisk().value(QNBPreferenceKey::presetsStored),
              QVariant(QVariantMap{{QStringLiteral("loaded"), true}}));
    EXPECT_EQ(domainOnDisk().value(QNBPreferenceKey::presets), QVariant(QVariantList()));
    EXPECT_TRUE(readSettings().presets.isEmpty());
}

TEST_F(QNBSettingsStoreTest, PresetsWithoutPresetsStoredAreAFirstRun)
{
    writePropertyList(domainPath(),
                      QVariantMap{{QNBPreferenceKey::presets, QVariantList{record(QStringLiteral("Mine"))}}});
    EXPECT_EQ(labels(readSettings()),
              (QStringList{QStringLiteral("Default A"), QStringLiteral("Default B")}));
}

TEST_F(QNBSettingsStoreTest, PresetsStoredWithoutLoadedTrueAreAFirstRun)
{
    for (const QVariant &marker :
         {QVariant(QVariantMap()), QVariant(QVariantMap{{QStringLiteral("loaded"), false}}),
          QVariant(QStringLiteral("loaded"))}) {
        writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::presetsStored, marker},
                                                    {QNBPreferenceKey::presets, QVariantList()}});
        EXPECT_EQ(readSettings().presets.size(), 2);
    }
}

TEST_F(QNBSettingsStoreTest, OnlyTheHotKeyCodePresentLoadsNoHotKey)
{
    writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::hotKeyCode, 36}});
    EXPECT_EQ(readSettings().shortcutCombo, QNBKeyCombo());
    writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::hotKeyFlags, 36}});
    EXPECT_EQ(readSettings().shortcutCombo, QNBKeyCombo());
    writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::hotKeyCode, 36},
                                                {QNBPreferenceKey::hotKeyFlags, 1 << 20}});
    EXPECT_EQ(readSettings().shortcutCombo, (QNBKeyCombo{1 << 20, 36}));
}

TEST_F(QNBSettingsStoreTest, WithoutOneOfItsKeysOrAsNoNumbersTheHotKeyStaysAsItWas)
{
    const QNBKeyCombo before{1u << 18, 49};
    for (const QVariantMap &stored : {QVariantMap(), QVariantMap{{QNBPreferenceKey::hotKeyCode, 36}},
                                      QVariantMap{{QNBPreferenceKey::hotKeyFlags, 1 << 20}},
                                      QVariantMap{{QNBPreferenceKey::hotKeyCode, 36},
                                                  {QNBPreferenceKey::hotKeyFlags, QStringLiteral("none")}}}) {
        writePropertyList(domainPath(), stored);
        Preferences preferences(domain, options());
        QNBSettings settings;
        settings.shortcutCombo = before;
        EXPECT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
        EXPECT_EQ(settings.shortcutCombo, before) << qPrintable(stored.keys().join(u' '));
    }
}

TEST_F(QNBSettingsStoreTest, ShowMenubarIsItsBooleanValue)
{
    const auto showMenubar = [this](const QVariant &value) {
        writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::showMenubar, value}});
        return readSettings().showMenubar;
    };
    EXPECT_FALSE(showMenubar(false));
    EXPECT_TRUE(showMenubar(true));
    EXPECT_TRUE(showMenubar(1));
    EXPECT_FALSE(showMenubar(QVariantList()));
}

TEST_F(QNBSettingsStoreTest, ExtraKeysSurviveAReadWriteCycleAndUidsAreNotStored)
{
    QVariantMap extra = record(QStringLiteral("Mine"));
    extra.insert(QStringLiteral("true"), true);
    extra.insert(QStringLiteral("one"), 1LL);
    extra.insert(QStringLiteral("one point nought"), 1.0);
    extra.insert(QStringLiteral("huge"), std::numeric_limits<qulonglong>::max());
    extra.insert(QStringLiteral("bytes"), QByteArray("\0\1\2", 3));
    extra.insert(QStringLiteral("date"), QDateTime(QDate(2026, 11, 21), QTime(5, 4, 3), Qt::UTC));
    extra.insert(QStringLiteral("list"), QVariantList{QStringLiteral("a"), QVariantMap()});
    QVariantMap hierarchy = extra.value(QNBPresetKey::fileHierarchy).toMap();
    hierarchy.insert(QStringLiteral("uid"), QString(40, u'a'));
    QVariantMap stored = extra;
    stored.insert(QNBPresetKey::fileHierarchy, hierarchy);
    writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::presetsStored,
                                                 QVariantMap{{QStringLiteral("loaded"), true}}},
                                                {QNBPreferenceKey::presets, QVariantList{stored}},
                                                {QStringLiteral("unknown"), QVariantList{1LL, 2.5}}});

    const QNBSettings settings = readSettings();
    ASSERT_TRUE(writeSettings(settings));

    const QVariantMap written = domainOnDisk();
    ASSERT_EQ(written.value(QNBPreferenceKey::presets).toList().size(), 1);
    QVariantMap again = written.value(QNBPreferenceKey::presets).toList().constFirst().toMap();
    EXPECT_FALSE(containsKey(again, QStringLiteral("uid")));
    hierarchy.remove(QStringLiteral("uid"));
    hierarchy.insert(QStringLiteral("children"),
                     QVariantList{QVariantMap{{QStringLiteral("filename"), QStringLiteral("inside")},
                                              {QStringLiteral("permissions"), QStringLiteral("764")}}});
    EXPECT_EQ(again.take(QNBPresetKey::fileHierarchy), QVariant(hierarchy));
    extra.remove(QNBPresetKey::fileHierarchy);
    EXPECT_EQ(again, extra);
    for (auto value = extra.cbegin(); value != extra.cend(); ++value)
        EXPECT_EQ(again.value(value.key()).typeId(), value->typeId()) << qPrintable(value.key());
    EXPECT_EQ(written.value(QStringLiteral("unknown")), QVariant(QVariantList({1LL, 2.5})));
    EXPECT_NE(readSettings().presets.constFirst()->fileHierarchy()->uid(),
              settings.presets.constFirst()->fileHierarchy()->uid());
}

TEST_F(QNBSettingsStoreTest, WritingKeepsTheOrderAndStoresTheOptions)
{
    QNBSettings settings = readSettings();
    std::swap(settings.presets[0], settings.presets[1]);
    settings.showMenubar = false;
    settings.shortcutCombo = {(1u << 20) | (1u << 17), 36};
    ASSERT_TRUE(writeSettings(settings));
    const QNBSettings again = readSettings();
    EXPECT_EQ(labels(again), (QStringList{QStringLiteral("Default B"), QStringLiteral("Default A")}));
    EXPECT_FALSE(again.showMenubar);
    EXPECT_EQ(again.shortcutCombo, settings.shortcutCombo);
    EXPECT_EQ(domainOnDisk().value(QNBPreferenceKey::hotKeyCode).typeId(), QMetaType::LongLong);
}

TEST_F(QNBSettingsStoreTest, ReadingSeesWhatAnotherProgramHasSavedSince)
{
    Preferences preferences(domain, options());
    QNBSettings settings;
    ASSERT_TRUE(writeSettings(readSettings()));
    ASSERT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_EQ(settings.presets.size(), 2);
    ASSERT_TRUE(writeSettings(QNBSettings()));
    ASSERT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_TRUE(settings.presets.isEmpty());
}

TEST_F(QNBSettingsStoreTest, WhatCannotBeReadIsNeitherAFirstRunNorSavedOver)
{
    // As with a home that is not mounted yet.
    const QString elsewhere = folder_.filePath(QStringLiteral("home"));
    ASSERT_TRUE(QFile::link(elsewhere + QStringLiteral("/target.plist"), domainPath()));
    Preferences preferences(domain, options());
    QNBSettings settings;
    EXPECT_FALSE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_FALSE(preferences.hasPendingValues()) << "nobody knows that a key is absent";
    EXPECT_FALSE(QNBSettingsStore::write(preferences, settings));

    ASSERT_TRUE(QDir().mkpath(elsewhere));
    writePropertyList(
        elsewhere + QStringLiteral("/target.plist"),
        QVariantMap{{QNBPreferenceKey::presetsStored, QVariantMap{{QStringLiteral("loaded"), true}}},
                    {QNBPreferenceKey::presets, QVariantList{record(QStringLiteral("Mine"))}}});
    const QVariantMap mine = domainOnDisk();
    EXPECT_FALSE(QNBSettingsStore::write(preferences, settings)) << "still unread";
    EXPECT_EQ(domainOnDisk(), mine);
    Preferences again(domain, options());
    ASSERT_TRUE(QNBSettingsStore::read(again, bundle(), settings));
    EXPECT_EQ(labels(settings), QStringList{QStringLiteral("Mine")});
}

TEST_F(QNBSettingsStoreTest, ASecondSaveOfTheSameLeavesTheBackupAsItWas)
{
    QNBSettings settings = readSettings();
    ASSERT_TRUE(writeSettings(settings));
    const QVariantMap first = domainOnDisk();
    settings.presets.removeLast();
    for (int save = 0; save < 2; ++save)
        ASSERT_TRUE(writeSettings(settings));
    QFile backup(domainPath() + QStringLiteral(".backup"));
    ASSERT_TRUE(backup.open(QIODevice::ReadOnly));
    const QByteArray bytes = backup.readAll();
    EXPECT_EQ(PropertyList::read(bytes).value, QVariant(first));
    const auto presets = QNBSettingsStore::presetsOf(bytes);
    ASSERT_TRUE(presets) << qPrintable(presets.error);
    ASSERT_EQ(presets->size(), 2);
    EXPECT_EQ((*presets)[1]->label(), QStringLiteral("Default B"));
}

TEST_F(QNBSettingsStoreTest, ADomainOfTheFirstVersionIsWrittenAnewOnlyWhenItChanges)
{
    ASSERT_TRUE(QFile::copy(QStringLiteral(QUENBY_MODEL_TEST_DATA "/first-version.plist"), domainPath()));
    QFile file(domainPath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    file.close();
    QFile backup(domainPath() + QStringLiteral(".backup"));
    const auto contentIs = [](QFile &opened, const QByteArray &bytes) {
        const bool isSame = opened.open(QIODevice::ReadOnly) && opened.readAll() == bytes;
        opened.close();
        return isSame;
    };

    Preferences preferences(domain, options());
    QNBSettings settings;
    ASSERT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    EXPECT_EQ(settings.presets.size(), 6);
    for (int save = 0; save < 2; ++save)
        ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
    EXPECT_TRUE(contentIs(file, before));
    EXPECT_FALSE(backup.exists());
    settings.presets.removeFirst();
    for (int save = 0; save < 2; ++save)
        ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
    EXPECT_EQ(readSettings().presets.size(), 5);
    EXPECT_TRUE(contentIs(backup, before));
    EXPECT_TRUE(keptAside().isEmpty());
    const auto presets = QNBSettingsStore::presetsOf(before);
    ASSERT_TRUE(presets);
    EXPECT_EQ(presets->constFirst()->label(), QStringLiteral("Client Project"));
}

TEST_F(QNBSettingsStoreTest, AStateWithoutPresetsSaysSo)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("garbage"), *PropertyList::write(QVariantMap()).bytes}) {
        const auto presets = QNBSettingsStore::presetsOf(bytes);
        EXPECT_FALSE(presets);
        EXPECT_FALSE(presets.error.isEmpty());
    }
}

TEST_F(QNBSettingsStoreTest, AMissingDefaultPresetsResourceGivesAnEmptyList)
{
    ASSERT_TRUE(QFile::remove(resource(QStringLiteral("DefaultPresets.plist"))));
    EXPECT_TRUE(readSettings().presets.isEmpty());
    Preferences preferences(domain, options());
    QNBSettings withoutBundle;
    EXPECT_TRUE(QNBSettingsStore::read(preferences, {}, withoutBundle));
    EXPECT_TRUE(withoutBundle.presets.isEmpty());
}

TEST_F(QNBSettingsStoreTest, ADamagedDefaultPresetsResourceGivesAnEmptyList)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("bplist00"), QByteArray("<plist><dict/></plist>")}) {
        writeFile(resource(QStringLiteral("DefaultPresets.plist")), bytes);
        EXPECT_TRUE(readSettings().presets.isEmpty());
    }
}

/// What stands under the known keys is of another type than it should be, or more than items hold.
struct WrongType
{
    const char *name;
    QVariant presets;
    QStringList remaining;
};

class QNBSettingsStoreWrongTypes : public QNBSettingsStoreTest,
                                   public ::testing::WithParamInterface<WrongType>
{
};

TEST_P(QNBSettingsStoreWrongTypes, AreLeftOutAndTheDomainIsKeptAside)
{
    const QVariantMap before{{QNBPreferenceKey::presetsStored, QVariantMap{{QStringLiteral("loaded"), true}}},
                             {QNBPreferenceKey::presets, GetParam().presets}};
    writePropertyList(domainPath(), before);
    const QNBSettings settings = readSettings();
    EXPECT_EQ(labels(settings), GetParam().remaining);
    ASSERT_TRUE(writeSettings(settings));
    ASSERT_EQ(keptAside().size(), 1);
    QFile aside(folder_.filePath(keptAside().constFirst()));
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(PropertyList::read(aside.readAll()).value, QVariant(before));
}

INSTANTIATE_TEST_SUITE_P(
    , QNBSettingsStoreWrongTypes,
    ::testing::Values(
        WrongType{"PresetsADictionary", QVariantMap{{QStringLiteral("a"), 1LL}}, {}},
        WrongType{"PresetsAString", QStringLiteral("none"), {}},
        WrongType{"ARecordThatIsAnArray",
                  QVariantList{record(QStringLiteral("A")), QVariantList{1LL}, record(QStringLiteral("B"))},
                  {QStringLiteral("A"), QStringLiteral("B")}},
        WrongType{"AHierarchyThatIsAString",
                  QVariantList{QVariantMap{{QNBPresetKey::label, QStringLiteral("A")},
                                           {QNBPresetKey::fileHierarchy, QStringLiteral("x")}}},
                  {QStringLiteral("A")}},
        WrongType{"AFilenameThatIsANumber",
                  QVariantList{QVariantMap{
                      {QNBPresetKey::label, QStringLiteral("A")},
                      {QNBPresetKey::fileHierarchy, QVariantMap{{QStringLiteral("filename"), 12LL}}}}},
                  {QStringLiteral("A")}},
        WrongType{"AnItemsKeyThatIsUnknown",
                  QVariantList{QVariantMap{
                      {QNBPresetKey::label, QStringLiteral("A")},
                      {QNBPresetKey::fileHierarchy,
                       QVariantMap{{QStringLiteral("comment"), QStringLiteral("from a later version")}}}}},
                  {QStringLiteral("A")}},
        WrongType{"ChildrenThatAreAString",
                  QVariantList{QVariantMap{{QNBPresetKey::label, QStringLiteral("A")},
                                           {QNBPresetKey::fileHierarchy,
                                            QVariantMap{{QStringLiteral("children"), QStringLiteral("x")}}}}},
                  {QStringLiteral("A")}}),
    [](const auto &test) { return std::string(test.param.name); });

TEST_F(QNBSettingsStoreTest, WhatASaveLosesIsKeptAsideOnce)
{
    writePropertyList(
        domainPath(),
        QVariantMap{{QNBPreferenceKey::presetsStored, QVariantMap{{QStringLiteral("loaded"), true}}},
                    {QNBPreferenceKey::presets,
                     QVariantList{QVariantMap{{QNBPresetKey::fileHierarchy, QStringLiteral("x")}}}}});
    Preferences preferences(domain, options());
    QNBSettings settings;
    EXPECT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
    settings.showMenubar = !settings.showMenubar;
    ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
    EXPECT_EQ(keptAside().size(), 1);
}

TEST_F(QNBSettingsStoreTest, TreesReadLateAreThoseThatWereStored)
{
    ASSERT_TRUE(writeSettings(readSettings()));
    Preferences preferences(domain, options());
    QNBSettings settings;
    EXPECT_TRUE(QNBSettingsStore::read(preferences, bundle(), settings));
    // The domain is replaced, and the preferences have read it anew, before a tree is asked
    // for.
    ASSERT_TRUE(writeSettings(QNBSettings()));
    ASSERT_TRUE(preferences.appSynchronize());
    ASSERT_EQ(settings.presets.size(), 2);
    EXPECT_EQ(settings.presets[1]->fileHierarchy()->childAtIndex(0)->filename(), QStringLiteral("inside"));
    EXPECT_EQ(settings.presets[1]->fileHierarchy(), settings.presets[1]->fileHierarchy());
}

TEST_F(QNBSettingsStoreTest, NothingIsKeptAsideForAGoodDomain)
{
    ASSERT_TRUE(writeSettings(readSettings()));
    ASSERT_TRUE(writeSettings(readSettings()));
    EXPECT_TRUE(keptAside().isEmpty());
}

TEST_F(QNBSettingsStoreTest, ARecordWithoutAHierarchyIsGivenAnEmptyItem)
{
    writePropertyList(
        domainPath(),
        QVariantMap{{QNBPreferenceKey::presetsStored, QVariantMap{{QStringLiteral("loaded"), true}}},
                    {QNBPreferenceKey::presets,
                     QVariantList{QVariantMap{{QNBPresetKey::label, QStringLiteral("A")}}}}});
    const QNBSettings settings = readSettings();
    ASSERT_EQ(settings.presets.size(), 1);
    ASSERT_TRUE(settings.presets.constFirst()->fileHierarchy());
    EXPECT_EQ(settings.presets.constFirst()->fileHierarchy()->numberOfChildren(), 0u);
    EXPECT_TRUE(keptAside().isEmpty());
}

TEST_F(QNBSettingsStoreTest, ConfigValueIsTheBundlesOrNone)
{
    const QString key = QStringLiteral("CFBundleShortVersionString");
    EXPECT_EQ(QNBSettingsStore::configValueForKey(bundle(), key), QVariant(QStringLiteral("1.2")));
    EXPECT_FALSE(QNBSettingsStore::configValueForKey(bundle(), QStringLiteral("absent")).isValid());
    EXPECT_FALSE(QNBSettingsStore::configValueForKey({}, key).isValid());
    const std::optional<Bundle> damaged = bundle();
    writeFile(folder_.filePath(QStringLiteral("Quenby.prefPane/Contents/Info.plist")), "bplist00");
    EXPECT_FALSE(QNBSettingsStore::configValueForKey(damaged, key).isValid());
}

TEST_F(QNBSettingsStoreTest, AParseFailureOfTheInformationIsLoggedAsTheParserPutsIt)
{
    static QStringList logged;
    logged.clear();
    const QByteArray damaged("bplist00");
    const std::optional<Bundle> ours = bundle();
    writeFile(folder_.filePath(QStringLiteral("Quenby.prefPane/Contents/Info.plist")), damaged);
    const QtMessageHandler before = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { logged << text; });
    QNBSettingsStore::configValueForKey(ours, QStringLiteral("CFBundleShortVersionString"));
    qInstallMessageHandler(before);
    ASSERT_EQ(logged, QStringList(PropertyList::read(damaged).error));
    EXPECT_FALSE(logged.constFirst().isEmpty());
}

TEST_F(QNBSettingsStoreTest, FirstRunCopiesTheDefaultApplicationSupportFolder)
{
    const QString script = resource(QStringLiteral("QNB Default AppSupport/Scripts/open.sh"));
    writeFile(script, "#!/bin/sh\n");
    ASSERT_TRUE(QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner));
    writeFile(resource(QStringLiteral("QNB Default AppSupport/File Content/Brief.txt")), "brief");
    const QString support = folder_.filePath(QStringLiteral("data/deep/Quenby"));
    const Result<> copied = QNBSettingsStore::setUpApplicationSupport(bundle(), support);
    ASSERT_TRUE(copied) << qPrintable(copied.error);
    EXPECT_TRUE(QFileInfo(support + QStringLiteral("/Scripts/open.sh")).isExecutable());
    EXPECT_TRUE(QFile::permissions(support + QStringLiteral("/Scripts/open.sh")) & QFile::WriteOwner);
    EXPECT_TRUE(QFileInfo::exists(support + QStringLiteral("/File Content/Brief.txt")));
    EXPECT_EQ(QDir(folder_.filePath(QStringLiteral("data/deep")))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("Quenby")});
}

TEST_F(QNBSettingsStoreTest, AnExistingApplicationSupportFolderIsNeverTouched)
{
    writeFile(resource(QStringLiteral("QNB Default AppSupport/Scripts/open.sh")), "#!/bin/sh\n");
    const QString support = folder_.filePath(QStringLiteral("Quenby"));
    ASSERT_TRUE(QDir().mkpath(support));
    EXPECT_TRUE(QNBSettingsStore::setUpApplicationSupport(bundle(), support));
    EXPECT_TRUE(QDir(support).isEmpty());
    const QString link = folder_.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(folder_.filePath(QStringLiteral("nowhere")), link));
    EXPECT_TRUE(QNBSettingsStore::setUpApplicationSupport(bundle(), link));
    EXPECT_FALSE(QFileInfo::exists(link));
}

TEST_F(QNBSettingsStoreTest, AFailingCopyOfTheSupportFolderLeavesNothing)
{
    const QString support = folder_.filePath(QStringLiteral("data/Quenby"));
    EXPECT_FALSE(QNBSettingsStore::setUpApplicationSupport(bundle(), support));
    EXPECT_FALSE(QNBSettingsStore::setUpApplicationSupport({}, support));
    EXPECT_TRUE(QDir(folder_.filePath(QStringLiteral("data")))
                    .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    writeFile(folder_.filePath(QStringLiteral("file")), "in the way");
    EXPECT_FALSE(
        QNBSettingsStore::setUpApplicationSupport(bundle(), folder_.filePath(QStringLiteral("file/Quenby"))));
}
