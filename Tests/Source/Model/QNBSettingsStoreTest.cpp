// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "QNBSettingsStoreFixture.h"

#include <algorithm>

namespace {

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

class QNBSettingsStoreTest : public QNBSettingsStoreFixture
{
};

} // namespace

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
    EXPECT_EQ(readSettings().shortcutCombo, (QNBKeyCombo{1 << 20, 36, true}));
}

TEST_F(QNBSettingsStoreTest, AHotKeyOfAnotherProgramOrAnEarlierVersionStaysMarkedAsOne)
{
    writePropertyList(domainPath(), QVariantMap{{QNBPreferenceKey::hotKeyCode, 6},
                                                {QNBPreferenceKey::hotKeyFlags, 1 << 20}});
    QNBSettings settings = readSettings();
    EXPECT_TRUE(settings.shortcutCombo.mayMeanCharacter);
    ASSERT_TRUE(writeSettings(settings));
    EXPECT_FALSE(domainOnDisk().contains(QNBPreferenceKey::hotKeyIsPlace));
    EXPECT_EQ(readSettings().shortcutCombo, settings.shortcutCombo);

    settings.shortcutCombo = {1 << 20, 16};
    ASSERT_TRUE(writeSettings(settings));
    EXPECT_EQ(domainOnDisk().value(QNBPreferenceKey::hotKeyIsPlace), true);
    EXPECT_EQ(readSettings().shortcutCombo, settings.shortcutCombo);

    // As from a state that was taken before.
    settings.shortcutCombo = {1 << 20, 6, true};
    ASSERT_TRUE(writeSettings(settings));
    EXPECT_FALSE(domainOnDisk().contains(QNBPreferenceKey::hotKeyIsPlace));
    EXPECT_EQ(readSettings().shortcutCombo, settings.shortcutCombo);
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

TEST_F(QNBSettingsStoreTest, ASnapshotIsWhatStoodThereWhenItWasTaken)
{
    QVariantMap hierarchy{{QStringLiteral("isFolder"), true}};
    hierarchy.insert(
        QStringLiteral("children"),
        QVariantList{
            QVariantMap{{QStringLiteral("filename"), QStringLiteral("folder")},
                        {QStringLiteral("isFolder"), true},
                        {QStringLiteral("color"), QStringLiteral("red")},
                        {QStringLiteral("permissions"), QStringLiteral("750")},
                        {QStringLiteral("children"),
                         QVariantList{QVariantMap{{QStringLiteral("filename"), QStringLiteral("a")}},
                                      QVariantMap{{QStringLiteral("filename"), QString(1000, u'b')}}}}},
            QVariantMap{{QStringLiteral("filename"), QStringLiteral("file")},
                        {QStringLiteral("contentFilename"), QStringLiteral("Letter.txt")}}});
    QVariantMap stored = record(QStringLiteral("Mine"));
    stored.insert(QNBPresetKey::fileHierarchy, hierarchy);
    stored.insert(QStringLiteral("list"), QVariantList{QStringLiteral("a"), QVariantMap()});
    QNBSettings settings;
    settings.showMenubar = false;
    settings.shortcutCombo = {1u << 20, 36};
    settings.presets = {QNBPresetRecord::fromStored(PropertyListDocument::fromVariant(stored)->root()),
                        std::make_shared<QNBPresetRecord>()};
    const QVariantMap before = settings.presets.constFirst()->toStored();

    const QDateTime taken(QDate(2026, 11, 22), QTime(1, 2, 3), Qt::UTC);
    const QNBSettingsSnapshot snapshot = QNBSettingsStore::snapshot(settings, taken);
    QNBPresetRecord &edited = *settings.presets.constFirst();
    const QNBHierarchyItemPtr root = edited.fileHierarchy();
    root->children().front()->children().front()->setFilename(QStringLiteral("renamed"));
    root->removeChild(root->children().back());
    edited.setValueForKey({}, QStringLiteral("list"));
    settings.presets.removeLast();

    const EncodedPreference encoded = QNBSettingsStore::encode(snapshot);
    QString error;
    const PropertyListDocument::Ptr document =
        PropertyListDocument::parse(encoded.writer.finish(encoded.top).bytes.value_or(QByteArray()), &error);
    ASSERT_TRUE(document) << qPrintable(error);
    const Result<QNBSettings> again = QNBSettingsStore::decode(document);
    ASSERT_TRUE(again) << qPrintable(again.error);
    ASSERT_EQ(again->presets.size(), 2);
    EXPECT_EQ(again->presets.constFirst()->toStored(), before);
    EXPECT_FALSE(again->showMenubar);
    EXPECT_EQ(again->shortcutCombo, settings.shortcutCombo);
    EXPECT_EQ(QNBSettingsStore::takenAt(document), taken);
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
