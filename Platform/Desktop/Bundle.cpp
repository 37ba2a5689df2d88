// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/Bundle.h"

#include "Platform/PropertyLists/PropertyList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <link.h>

namespace {

Q_LOGGING_CATEGORY(lcBundle, "quenby.platform.bundle")

const QString informationFile = QStringLiteral("/Contents/Info.plist");
const QString resourceFolder = QStringLiteral("/Contents/Resources");
const QString codeFolder = QStringLiteral("/Contents/MacOS");
const QString identifierKey = QStringLiteral("CFBundleIdentifier");
const QString packageTypeKey = QStringLiteral("CFBundlePackageType");
const QString signatureKey = QStringLiteral("CFBundleSignature");
constexpr qsizetype codeLength = 4;
const QString executableKey = QStringLiteral("CFBundleExecutable");

const QString applicationSuffix = QStringLiteral("app");
const QStringList bundleSuffixes = {applicationSuffix, QStringLiteral("bundle"), QStringLiteral("plugin"),
                                    QStringLiteral("framework")};
const QStringList bundleContents = {QStringLiteral("/Contents"), QStringLiteral("/AppDir")};

const QString portableProgram = QStringLiteral("/AppDir/AppRun");

/// Of a path that may end in a slash.
QString bundleSuffix(const QString &path)
{
    return QFileInfo(QDir::cleanPath(path)).suffix().toLower();
}

int appendPathOfObject(dl_phdr_info *info, size_t, void *paths)
{
    // The program itself has no name here.
    const QString path = info->dlpi_name && *info->dlpi_name
                             ? QFileInfo(QFile::decodeName(info->dlpi_name)).absoluteFilePath()
                             : QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    static_cast<QStringList *>(paths)->append(path);
    return 0;
}

quint32 fourCharacterCode(const QVariant &value)
{
    const QByteArray bytes = value.toString().toLatin1();
    if (bytes.size() != codeLength)
        return 0;
    quint32 code = 0;
    for (const char byte : bytes)
        code = code << 8 | quint8(byte);
    return code;
}

} // namespace

Bundle::Bundle(QString path)
    : path_(std::move(path))
{
}

std::optional<Bundle> Bundle::bundleWithPath(const QString &path)
{
    if (path.isEmpty())
        return std::nullopt;
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    const QFileInfo information(absolute + informationFile);
    if (!information.isFile() || !information.isReadable())
        return std::nullopt;
    return Bundle(absolute);
}

bool Bundle::isBundle(const QString &path)
{
    if (bundleWithPath(path))
        return true;
    return bundleSuffixes.contains(bundleSuffix(path)) &&
           std::any_of(bundleContents.begin(), bundleContents.end(),
                       [&path](const QString &folder) { return QFileInfo(path + folder).isDir(); });
}

QString Bundle::programOf(const QString &path)
{
    if (const std::optional<Bundle> bundle = bundleWithPath(path))
        return bundle->executablePath();
    const QString program = path + portableProgram;
    return isBundle(path) && QFileInfo(program).isFile() ? program : QString();
}

bool Bundle::isNamedLikeAnApplication(const QString &path)
{
    return bundleSuffix(path) == applicationSuffix;
}

bool Bundle::isApplicationBundle(const QString &path)
{
    return isNamedLikeAnApplication(path) && isBundle(path);
}

QList<Bundle> Bundle::allBundles()
{
    QStringList objects;
    ::dl_iterate_phdr(appendPathOfObject, &objects);
    QList<Bundle> bundles;
    QStringList seen;
    for (const QString &object : std::as_const(objects)) {
        const QString folder = QFileInfo(object).path();
        if (!folder.endsWith(codeFolder))
            continue;
        const QString path = folder.chopped(codeFolder.size());
        if (seen.contains(path))
            continue;
        seen.append(path);
        if (const std::optional<Bundle> bundle = bundleWithPath(path))
            bundles.append(*bundle);
    }
    return bundles;
}

QString Bundle::bundleIdentifier() const
{
    return infoDictionary().value(identifierKey).toString();
}

QString Bundle::resourcePath() const
{
    return path_ + resourceFolder;
}

QString Bundle::executablePath() const
{
    const QString path = expectedExecutablePath();
    return QFileInfo(path).isFile() ? path : QString();
}

QString Bundle::expectedExecutablePath() const
{
    const QString name = infoDictionary().value(executableKey).toString();
    // A name, not a path: what a bundle runs is inside it.
    if (name.isEmpty() || name.contains(u'/'))
        return {};
    return path_ + codeFolder + u'/' + name;
}

QString Bundle::pathForResource(const QString &name, const QString &type, const QString &directory) const
{
    if (name.isEmpty())
        return {};
    QString path = resourcePath() + u'/';
    if (!directory.isEmpty())
        path += directory + u'/';
    path += name;
    if (!type.isEmpty())
        path += u'.' + type;
    path = QDir::cleanPath(path);
    return QFileInfo::exists(path) ? path : QString();
}

QVariantMap Bundle::infoDictionary() const
{
    QFile file(path_ + informationFile);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcBundle) << file.fileName() << file.errorString();
        return {};
    }
    const PropertyList::ReadResult result = PropertyList::read(file.readAll());
    if (!result) {
        qCWarning(lcBundle) << file.fileName() << result.error;
        return {};
    }
    return result.value->toMap();
}

Bundle::Codes Bundle::codesOfExecutable(const QString &executable)
{
    const QString folder = executable.section(u'/', 0, -2);
    if (!folder.endsWith(codeFolder))
        return {};
    const std::optional<Bundle> bundle = bundleWithPath(folder.chopped(codeFolder.size()));
    if (!bundle)
        return {};
    const QVariantMap dictionary = bundle->infoDictionary();
    return {fourCharacterCode(dictionary.value(packageTypeKey)),
            fourCharacterCode(dictionary.value(signatureKey))};
}
