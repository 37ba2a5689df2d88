// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/WorkspaceIcons.h"

#include "Platform/Desktop/Bundle.h"
#include "Toolkit/PaintedIcon.h"
#include "Toolkit/TintedIconEngine.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QPainter>
#include <QPainterPath>

namespace {

/// No registered kind of file has a longer extension; the registry is not asked about essays.
constexpr qsizetype longestExtension = 64;

constexpr float tintOpacity = 0.5F;

const QString folderIconName = QStringLiteral("folder");
const QString documentIconName = QStringLiteral("text-x-generic");
const QString scriptIconName = QStringLiteral("text-x-script");
const QString programIconName = QStringLiteral("application-x-executable");
constexpr char interpreterMark[] = {'#', '!'};

/// In the theme to which every other falls back, programs have put icons of their own; those of files and
/// folders are for the others. Whoever looks through it reads for longer than a window takes to open.
bool isIconTheme(const QString &name)
{
    return !name.isEmpty() && name != u"hicolor";
}

/// A theme that lacks an icon may also answer with one that has no content.
QIcon themeIcon(const QString &name, const QIcon &otherwise)
{
    if (!isIconTheme(QIcon::themeName()))
        return otherwise;
    const QIcon icon = QIcon::fromTheme(name);
    return icon.availableSizes().isEmpty() ? otherwise : icon;
}

// Our own icons, for a desktop without a theme, in sixteenths of their side.

/// Maps them to \a rect.
void useSixteenths(QPainter &painter, const QRectF &rect)
{
    painter.translate(rect.topLeft());
    painter.scale(rect.width() / 16, rect.height() / 16);
}

void paintFolder(QPainter &painter, const QRectF &rect)
{
    useSixteenths(painter, rect);
    painter.setBrush(QColor(0x4F, 0x7D, 0xAC));
    painter.drawRoundedRect(QRectF(1, 2, 7, 6), 1, 1);
    painter.drawRoundedRect(QRectF(1, 4, 14, 10), 1, 1);
    painter.setBrush(QColor(0x7F, 0xAB, 0xD6));
    painter.drawRoundedRect(QRectF(1, 6, 14, 8), 1, 1);
}

void paintDocument(QPainter &painter, const QRectF &rect)
{
    useSixteenths(painter, rect);
    const QColor ink(0x7F, 0x86, 0x8D);
    QPainterPath page;
    page.addPolygon(QPolygonF({{2.5, 1.5}, {9.5, 1.5}, {13.5, 5.5}, {13.5, 14.5}, {2.5, 14.5}}));
    page.closeSubpath();
    painter.setBrush(QColor(0xFB, 0xFB, 0xFB));
    painter.setPen(ink);
    painter.drawPath(page);
    painter.setBrush(ink);
    painter.drawPolygon(QPolygonF({{9.5, 1.5}, {13.5, 5.5}, {9.5, 5.5}}));
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
    if (extension.isEmpty() || extension.size() > longestExtension || !isIconTheme(theme_))
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
        folder_ = themeIcon(folderIconName, paintedIcon(paintFolder));
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
    if (theme == theme_)
        return;
    theme_ = theme;
    types_.clear();
    tinted_.clear();
    folder_ = {};
    document_ = {};
}

const QIcon &WorkspaceIcons::documentIcon()
{
    if (document_.isNull())
        document_ = themeIcon(documentIconName, paintedIcon(paintDocument));
    return document_;
}
