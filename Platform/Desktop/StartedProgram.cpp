// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/StartedProgram.h"

#include "Platform/Desktop/Bundle.h"
#include "Platform/Files/FileDescriptor.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString nameKey = QStringLiteral("CFBundleDisplayName");
const QString commentKey = QStringLiteral("CFBundleGetInfoString");
/// The name of an icon in the theme.
const QString iconKey = QStringLiteral("CFBundleIconFile");
const QString identifierKey = QStringLiteral("CFBundleIdentifier");

/// As much of a name as leaves room in a file name for a hash, a number and a suffix.
constexpr qsizetype maximumNameSize = 64;
constexpr qsizetype maximumIdSize = 200;

/// \a text in one line, for an entry.
QByteArray oneLine(QString text)
{
    for (QChar &character : text) {
        if (character.category() == QChar::Other_Control)
            character = QChar::ReplacementCharacter;
    }
    return text.toUtf8();
}

/// Whether a desktop takes it for the identifier of an application.
bool isApplicationId(const QString &text)
{
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("[A-Za-z_][A-Za-z0-9_]*(\\.[A-Za-z_][A-Za-z0-9_]*)+")));
    return text.size() <= maximumIdSize && form.match(text).hasMatch();
}

} // namespace

StartedProgram::StartedProgram(QByteArray path, QByteArray program, QVariantMap information)
    : path_(std::move(path))
    , program_(std::move(program))
    , information_(std::move(information))
{
}

Result<StartedProgram> StartedProgram::ofFile(const QByteArray &path)
{
    // A bundle is opened by a path that is text, whatever its own is.
    const FileDescriptor opened(FileLayer::real(), ::open(path.constData(), O_PATH | O_CLOEXEC));
    const QString openedPath = QStringLiteral("/proc/self/fd/%1").arg(opened.get());
    if (QFileInfo(openedPath).isDir() && Bundle::isNamedLikeAnApplication(QFile::decodeName(path))) {
        const std::optional<Bundle> bundle = Bundle::bundleWithPath(openedPath);
        const QString executable = bundle ? bundle->expectedExecutablePath() : QString();
        if (executable.isEmpty())
            return Result<StartedProgram>::failure(QStringLiteral("an application that names no executable"));
        return StartedProgram(path, path + QFile::encodeName(executable.sliced(openedPath.size())),
                              bundle->infoDictionary());
    }
    if (!isProgram(path))
        return Result<StartedProgram>::failure(QStringLiteral("neither an application nor a program"));
    return StartedProgram(path, path);
}

bool StartedProgram::isProgram(const QByteArray &path)
{
    struct stat information = {};
    return ::stat(path.constData(), &information) == 0 && S_ISREG(information.st_mode) &&
           ::access(path.constData(), X_OK) == 0;
}

QString StartedProgram::nameOfPath(const QByteArray &path)
{
    QString name = QFileInfo(QFile::decodeName(path)).completeBaseName().left(maximumNameSize);
    for (QChar &character : name) {
        const bool isReadable = (character >= u'a' && character <= u'z') ||
                                (character >= u'A' && character <= u'Z') ||
                                (character >= u'0' && character <= u'9') || character == u'_';
        if (!isReadable)
            character = u'-';
    }
    const QByteArray hash = QCryptographicHash::hash(path, QCryptographicHash::Sha1).toHex().left(16);
    return name + u'-' + QString::fromLatin1(hash);
}

QByteArray StartedProgram::name() const
{
    const QString own = text(nameKey);
    if (!own.isEmpty())
        return oneLine(own);
    const QFileInfo file(QFile::decodeName(path_));
    const QString name = file.completeBaseName();
    return oneLine(name.trimmed().isEmpty() ? file.fileName() : name);
}

QByteArray StartedProgram::comment() const
{
    return oneLine(text(commentKey));
}

QByteArray StartedProgram::icon() const
{
    return oneLine(text(iconKey));
}

QString StartedProgram::entryName() const
{
    const QString identifier = text(identifierKey);
    return isApplicationId(identifier) ? identifier : nameOfPath(path_);
}

bool StartedProgram::isEarlierName(const QString &fileName) const
{
    const QString earlier = nameOfPath(path_);
    return entryName() != earlier && fileName.startsWith(earlier);
}

QString StartedProgram::text(const QString &key) const
{
    const QVariant value = information_.value(key);
    return value.typeId() == QMetaType::QString ? value.toString().trimmed() : QString();
}
