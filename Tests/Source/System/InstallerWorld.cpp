// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Source/System/InstallerWorld.h"

#include "Platform/Files/FileOperations.h"

#include <filesystem>
#include <fstream>
#include <ostream>
#include <sys/stat.h>

namespace fs = std::filesystem;

/// Grants what the world grants, and does at once what the tool would do.
class InstallerWorld::FakeAuthorization final : public Authorization
{
public:
    explicit FakeAuthorization(InstallerWorld &world)
        : world_(world)
    {
    }
    bool copyRights(const QByteArray &tool, const QByteArrayList &arguments) override
    {
        world_.events.append(QStringLiteral("rights"));
        world_.requests.append(QByteArrayList{tool} + arguments);
        return world_.isAuthorized;
    }
    bool executeWithPrivileges() override
    {
        world_.events.append(QStringLiteral("remove as administrator"));
        return world_.canAdministratorRemove &&
               bool(FileOperations::removeItem(world_.requests.constLast().constLast()));
    }

private:
    InstallerWorld &world_;
};

InstallerWorld::InstallerWorld(const QByteArray &folderName)
    : root(folder_.path().toUtf8() + '/' + folderName)
{
    makeFolders(home() + "/Library");
    makeFolders(machineLibrary());
    makeInformation(pane(), versionEntry("1.1"));
    makePlugin(ownPlugin(), "1.1", "own");
}

InstallerWorld::~InstallerWorld()
{
    // Names that Qt cannot spell are not removed by it.
    std::error_code ignored;
    fs::remove_all(root.toStdString(), ignored);
}

CMMInstaller::Services InstallerWorld::services()
{
    return {
        .runAlertPanel =
            [this](const AlertPanel &alert) {
                events.append(QStringLiteral("alert"));
                alerts.append(alert);
                return alert.alternateButton.isEmpty() ? answerToMessage : answer;
            },
        .systemVersion = [this] { return systemVersion; },
        .copyAppValue =
            [this](const QString &key) {
                keysRead.append(key);
                return stored.value(key);
            },
        .setAppValue = [this](const QString &key, const QVariant &value) { stored.insert(key, value); },
        .createAuthorization = [this] { return std::make_unique<FakeAuthorization>(*this); },
        .askPlugin =
            [this](const QByteArray &path, const QByteArray &command,
                   const FileManagers::Answered &answered) {
                events.append(QString::fromLatin1(command));
                asked.append(path);
                answered(answerOfPlugin);
            },
        .registered = [this](const Result<QString> &said) { answers.append(said.error); },
        .fileExists = FileOperations::exists,
        .createDirectory =
            [this](const QByteArray &path) {
                return unless(Failure::Create, QStringLiteral("create"),
                              [&path] { return FileOperations::createDirectory(path); });
            },
        .removeItem =
            [this](const QByteArray &path) {
                return unless(Failure::Remove, QStringLiteral("remove"),
                              [&path] { return FileOperations::removeItem(path); });
            },
        .copyItem =
            [this](const QByteArray &from, const QByteArray &to) {
                return unless(Failure::Copy, QStringLiteral("copy"),
                              [&] { return FileOperations::copyItem(from, to); });
            },
        .homeFolder = home(),
        .machineLibraryFolder = machineLibrary(),
        .paneBundlePath = pane(),
    };
}

Result<> InstallerWorld::unless(Failure injected, const QString &event,
                                const std::function<Result<>()> &operation)
{
    events.append(event);
    return failure == injected ? Result<>::failure(reason) : operation();
}

void InstallerWorld::makeFolders(const QByteArray &path)
{
    fs::create_directories(path.toStdString());
}

QByteArray InstallerWorld::versionEntry(const QByteArray &version)
{
    return "<plist version=\"1.0\"><dict><key>CFBundleShortVersionString</key><string>" + version +
           "</string><key>CFBundleExecutable</key><string>program</string></dict></plist>";
}

void InstallerWorld::makeInformation(const QByteArray &bundle, const QByteArray &content)
{
    makeFolders(bundle + "/Contents");
    std::ofstream(fs::path((bundle + "/Contents/Info.plist").toStdString())) << content.toStdString();
}

void InstallerWorld::makePlugin(const QByteArray &path, const QByteArray &version, const QByteArray &mark)
{
    makeInformation(path, versionEntry(version));
    std::ofstream(fs::path((path + "/Contents/mark").toStdString())) << mark.toStdString();
}

QByteArray InstallerWorld::markOf(const QByteArray &path)
{
    std::ifstream stream(fs::path((path + "/Contents/mark").toStdString()));
    std::string mark;
    stream >> mark;
    return QByteArray::fromStdString(mark);
}

QByteArrayList InstallerWorld::namesIn(const QByteArray &folder)
{
    QByteArrayList names;
    std::error_code ignored;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder.toStdString(), ignored))
        names.append(QByteArray::fromStdString(entry.path().filename().native()));
    std::sort(names.begin(), names.end());
    return names;
}

bool operator==(const AlertPanel &one, const AlertPanel &other)
{
    return one.title == other.title && one.message == other.message &&
           one.defaultButton == other.defaultButton && one.alternateButton == other.alternateButton &&
           one.otherButton == other.otherButton;
}

void PrintTo(const AlertPanel &alert, std::ostream *stream)
{
    *stream << '[' << qPrintable(alert.title) << '|' << qPrintable(alert.message) << '|'
            << qPrintable(alert.defaultButton) << '|' << qPrintable(alert.alternateButton) << '|'
            << qPrintable(alert.otherButton) << ']';
}
