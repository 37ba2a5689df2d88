// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/WorkspaceIcons.h"

#include "Platform/Bundle.h"
#include "Toolkit/TintedIconEngine.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStyle>

namespace {

/// No registered kind of file has a longer extension; the registry is not asked about essays.
constexpr qsizetype longestExtension = 64;

constexpr float tintOpacity = 0.5F;

const QString scriptIconName = QStringLiteral("text-x-script");
const QString programIconName = QStringLiteral("application-x-executable");
constexpr char interpreterMark[] = {'#', '!'};

/// A theme that lacks an icon may also answer with one that has no content.
QIcon themeIcon(const QString &name, const QIcon &otherwise)
{
    const QIcon icon = QIcon::fromTheme(name);
    return icon.availableSizes().isEmpty() ? otherwise : icon;
}

/// What follows the last dot; a name that only begins with one has no extension.
QString extensionOf(const QString &path)
{
    const QStringView name = QStringView(path).mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    return dot > 0 ? name.mid(dot + 1).toString() : QString();
}

bool namesInterpreter(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) &&
           file.read(std::size(interpreterMark)) ==
               QByteArrayView(interpreterMark, std::size(interpreterMark));
}

} // namespace

QIcon WorkspaceIcons::iconForFileType(const QString &extension)
{
    followDesktop();
    if (extension.isEmpty() || extension.size() > longestExtension)
        return documentIcon();
    const QString key = extension.toLower();
    if (const QIcon *known = types_.object(key))
        return *known;

    QIcon icon = documentIcon();
    const QList<QMimeType> types = QMimeDatabase().mimeTypesForFileName(QStringLiteral("name.") + key);
    if (!types.isEmpty())
        icon = themeIcon(types.constFirst().iconName(),
                         themeIcon(types.constFirst().genericIconName(), documentIcon()));
    types_.insert(key, new QIcon(icon));
    return icon;
}

QIcon WorkspaceIcons::iconForFile(const QString &path)
{
    const QFileInfo file(path);
    if (file.isDir())
        return Bundle::isApplicationBundle(path) ? themeIcon(programIconName, folderIcon()) : folderIcon();
    const QString extension = extensionOf(path);
    if (!extension.isEmpty())
        return iconForFileType(extension);
    followDesktop();
    // Only files are read: a pipe could keep us waiting.
    if (!file.isFile() || !file.isExecutable())
        return documentIcon();
    return themeIcon(namesInterpreter(path) ? scriptIconName : programIconName, documentIcon());
}

QIcon WorkspaceIcons::folderIcon()
{
    followDesktop();
    if (folder_.isNull())
        folder_ = QApplication::style()->standardIcon(QStyle::SP_DirIcon);
    return folder_;
}

QIcon WorkspaceIcons::tintedIcon(const QIcon &icon, const QColor &color)
{
    followDesktop();
    QColor tint = color;
    tint.setAlphaF(tintOpacity);
    const std::pair key(icon.cacheKey(), tint.rgba());
    if (const QIcon *known = tinted_.object(key))
        return *known;
    const QIcon result(new TintedIconEngine(icon, tint));
    tinted_.insert(key, new QIcon(result));
    return result;
}

void WorkspaceIcons::followDesktop()
{
    const QString theme = QIcon::themeName();
    const QStyle *style = QApplication::style();
    if (theme == theme_ && style == style_)
        return;
    theme_ = theme;
    style_ = style;
    types_.clear();
    tinted_.clear();
    folder_ = {};
    document_ = {};
}

const QIcon &WorkspaceIcons::documentIcon()
{
    if (document_.isNull())
        document_ = QApplication::style()->standardIcon(QStyle::SP_FileIcon);
    return document_;
}
