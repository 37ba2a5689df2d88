// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/ContextMenu/MenuHome.h"

#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBSettingsStore.h"
#include "Tests/Session/ChildProcess.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace {

/// Nothing that runs here is to be taken for a helper by the tests of others.
const QString standIn = QStringLiteral("Stand 'In' $1");
const QString calls = QStringLiteral("calls");
const QByteArray helperInformation = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleExecutable</key><string>QNBHelper</string>
<key>CFBundlePackageType</key><string>APPL</string>
</dict></plist>)";

QStringList entriesBelow(const QString &folder)
{
    QStringList paths;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        paths.append(walk.next());
    return paths;
}

} // namespace

MenuHome::MenuHome(Programs programs)
{
    QProcessEnvironment environment = home_.environment();
    environment.insert(QStringLiteral("XDG_CONFIG_DIRS"), in(QStringLiteral("etc")));
    if (programs == Programs::Few)
        environment.insert(QStringLiteral("PATH"), programs_.folder() + u':' + in(QStringLiteral("bin")));
    for (const QString &name : environment.keys()) {
        before_.insert(name.toUtf8(), qgetenv(name.toUtf8().constData()));
        qputenv(name.toUtf8().constData(), environment.value(name).toUtf8());
    }
    makeFolder(in(QStringLiteral("etc")));
    makeFolder(in(QStringLiteral("bin")));
    for (const char *tool : {"sh", "sed", "mv"}) {
        const QString name = QString::fromLatin1(tool);
        QFile::link(QStringLiteral("/bin/") + name, in(QStringLiteral("bin/") + name));
    }
    const QString bundle = pane() + QStringLiteral("/Contents/MacOS/QNBHelper.app");
    const QString code = bundle + QStringLiteral("/Contents/MacOS/");
    helper_ = code + standIn;
    makeFolder(code);
    put(bundle + QStringLiteral("/Contents/Info.plist"), helperInformation);
    put(pane() + QStringLiteral("/Contents/Info.plist"), "<plist version=\"1.0\"><dict/></plist>");
    programs_.addAt(code + QStringLiteral("QNBHelper"), QStringLiteral("QNBHelper"));
    programs_.addAt(helper_, calls);
}

MenuHome::~MenuHome()
{
    for (auto variable = before_.begin(); variable != before_.end(); ++variable)
        qputenv(variable.key().constData(), variable.value());
}

QStringList MenuHome::hostileLabels()
{
    return {QStringLiteral("Client Project"),
            QString(),
            QStringLiteral(" "),
            QStringLiteral("a/b"),
            QStringLiteral("/"),
            QStringLiteral("../../../etc"),
            QStringLiteral("."),
            QStringLiteral(".."),
            QStringLiteral(".hidden"),
            QStringLiteral("--help"),
            QStringLiteral("-n"),
            QStringLiteral("backup~"),
            QStringLiteral("'; touch owned; '"),
            QStringLiteral("\"; touch owned; \""),
            QStringLiteral("$(touch owned)`touch owned`$HOME"),
            QStringLiteral("50% %f %F %% %U %"),
            QStringLiteral("back\\slash \\n \\s \\\\"),
            QStringLiteral("ends in \\"),
            QStringLiteral("line\nend\n"),
            QStringLiteral("tab\tcarriage\rreturn"),
            QStringLiteral("a;b&c|d<e>f#g*?[h]~!"),
            QStringLiteral("<name>&amp;</name>]]>"),
            QStringLiteral("_key & _key"),
            QStringLiteral("Ünïcode 漢字 😀"),
            QStringLiteral("e\u0301 and \u00e9"),
            QStringLiteral("%1").arg(QString(300, u'x')),
            QStringLiteral("漢").repeated(300),
            QStringLiteral("[Desktop Entry]\nExec=touch owned"),
            QStringLiteral("\u2028\u202e")};
}

QByteArrayList MenuHome::hostileFolders()
{
    return {"plain",    "two words",   " both ends ",  "'single'",     "\"double\"", "new\nline",
            "\nends\n", "back\\slash", "50%",          "%f",           "%41",        "$HOME",
            "$(id)",    "-dash",       "--in",         "a;b&c|d<e>",   "*?[a]",      "#",
            "~",        "tab\t",       "Ünïcode 漢字", "\x01\x1f\x7f", "\\0101"};
}

QString MenuHome::makeFolder(const QString &path) const
{
    EXPECT_TRUE(QDir().mkpath(path)) << qPrintable(path);
    return path;
}

void MenuHome::put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(path);
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray MenuHome::contentOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

void MenuHome::haveAllFileManagers() const
{
    for (const char *folder : {"dolphin", "nautilus"})
        makeFolder(data(QString::fromLatin1(folder)));
    for (const char *folder : {"nemo", "Thunar", "pcmanfm-qt", "caja"})
        makeFolder(config(QString::fromLatin1(folder)));
}

void MenuHome::storePresets(const QStringList &labels, const QVariantMap &hierarchy) const
{
    QNBSettings settings;
    for (const QString &label : labels) {
        settings.presets.append(std::make_shared<QNBPresetRecord>());
        settings.presets.last()->setValueForKey(label, QNBPresetKey::label);
        settings.presets.last()->setFileHierarchy(QNBHierarchyItem::initWithDictionary(hierarchy));
    }
    Preferences preferences(QNBProductIdentifier());
    ASSERT_TRUE(QNBSettingsStore::write(preferences, settings));
}

PresetMenu MenuHome::menuOf(const QStringList &labels) const
{
    QList<QNBPresetRecordPtr> presets;
    for (const QString &label : labels) {
        presets.append(std::make_shared<QNBPresetRecord>());
        presets.last()->setValueForKey(label, QNBPresetKey::label);
    }
    return PresetMenu::of(presets, helper());
}

bool MenuHome::hasBeenCalled() const
{
    return !programs_.starts(calls).isEmpty();
}

QByteArrayList MenuHome::callFor(const QString &label, const QByteArrayList &folders)
{
    QByteArrayList arguments = {"--create", label.toUtf8(), "--position", "1", "--notify"};
    for (const QByteArray &folder : folders)
        arguments << "--in" << folder;
    return arguments;
}

void MenuHome::expectCalled(const QString &program, const QStringList &arguments, const QString &label,
                            const QByteArrayList &folders, const QMap<QString, QString> &variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        environment.insert(variable.key(), variable.value());
    ChildProcess process(program, arguments, environment);
    ASSERT_TRUE(process.waitForEnd());
    EXPECT_TRUE(process.hasReturned(0)) << process.errors().constData();
    expectCall(label, folders);
}

void MenuHome::expectCall(const QString &label, const QByteArrayList &folders)
{
    ++calls_;
    ASSERT_TRUE(waitUntil([&] { return programs_.processes(calls).size() == calls_; })) << qPrintable(label);
    const QByteArrayList call = callFor(label, folders);
    EXPECT_EQ(programs_.starts(calls).count(call), seen_[call] + 1)
        << call.join('|').constData() << "\nstarted instead:\n"
        << programs_.starts(calls).last().join('|').constData();
    ++seen_[call];
}

QMap<QString, QByteArray> MenuHome::contentOfHome() const
{
    const QString state = home_.stateFolder() + QStringLiteral("/Quenby");
    QMap<QString, QByteArray> content;
    const QStringList paths = entriesBelow(home_.path());
    for (const QString &path : paths) {
        // Whoever saves the presets keeps earlier states of them.
        if (path.startsWith(home_.runtimeFolder()) || path == state ||
            path.startsWith(state + QStringLiteral("/Earlier States")))
            continue;
        const QFileInfo information(path);
        const QByteArray mode = QByteArray::number(int(information.permissions()), 16) + ' ';
        content.insert(path, mode + (information.isSymLink() ? information.symLinkTarget().toUtf8()
                                     : information.isFile()  ? contentOf(path)
                                                             : "folder"));
    }
    return content;
}

QMap<QString, QDateTime> MenuHome::timesOfHome() const
{
    QMap<QString, QDateTime> times;
    const QStringList paths = entriesBelow(home_.path());
    for (const QString &path : paths) {
        if (!path.startsWith(home_.runtimeFolder()))
            times.insert(path, QFileInfo(path).lastModified());
    }
    return times;
}
