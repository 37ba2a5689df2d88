// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Script.h"

#include "Helper/Creation/SupportFile.h"
#include "Helper/ScriptCopy.h"
#include "Helper/ScriptFile.h"
#include "Platform/Desktop/Bundle.h"
#include "Platform/LineText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Script", text);
}

bool isBelow(const QString &path, const QString &folder)
{
    return path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

/// The kernel looks at no more of a first line.
constexpr qsizetype kernelsLine = 256;

/// The word of the first line of a script that is a path relative to the folder in which it runs; empty if
/// there is none, or no such line.
QByteArray relativeInterpreter(const QByteArray &content)
{
    if (!content.startsWith("#!"))
        return {};
    const QByteArray line = content.left(kernelsLine).split('\n').constFirst().mid(2);
    const QByteArrayList words = line.simplified().split(' ');
    const QByteArray &interpreter = words.first();
    if (!interpreter.startsWith('/'))
        return interpreter;
    if (!interpreter.endsWith("/env"))
        return {};
    // What has no slash it looks for as a shell does.
    const auto relative = std::find_if(words.cbegin() + 1, words.cend(), [](const QByteArray &word) {
        return word.contains('/') && !word.startsWith('/') && !word.contains('=');
    });
    return relative == words.cend() ? QByteArray() : *relative;
}

} // namespace

Result<Script> Script::find(const QString &name, const QString &scriptsFolder)
{
    const auto fail = [&name](const QString &reason) {
        return Result<Script>::failure(
            tr("The script \"%1\" cannot be used: %2").arg(lineText(name), reason));
    };
    const Creation::SupportFile entry(FolderLayer::real(), QFile::encodeName(scriptsFolder), name,
                                      Creation::SupportFile::Kind::FileOrFolder);
    if (!entry.isOpen())
        return fail(entry.error() == ENOENT ? tr("it does not exist") : tr("it %1").arg(entry.problem()));

    Script script;
    script.path_ = entry.path();
    if (entry.isFolder()) {
        // Its name may be a link's.
        const QString program = Bundle::programOf(script.path_);
        script.bundlePath_ = std::exchange(script.path_, QFileInfo(program).canonicalFilePath());
        if (script.path_.isEmpty())
            return fail(tr("it is a folder without a program"));
        if (!isBelow(script.path_, script.bundlePath_))
            return fail(tr("its program is outside the folder %1").arg(lineText(script.bundlePath_)));
    }
    const Result<ScriptFile> file = ScriptFile::read(script.path_);
    if (!file)
        return fail(file.error);
    if (!file->isExecutable)
        return fail(tr("it is not executable"));
    if (const QByteArray relative = relativeInterpreter(file->content); !relative.isEmpty())
        return fail(tr("its first line has to name \"%1\" by an absolute path").arg(lineText(relative)));
    const Result<QByteArray> content =
        script.bundlePath_.isEmpty() ? file->content : ScriptCopy::descriptionOf(script.bundlePath_);
    if (!content)
        return fail(content.error);
    script.content_ = *content;
    return script;
}

bool Script::isText() const
{
    return !content_.contains('\0');
}

QString Script::shownContent() const
{
    return isText() ? linesText(content_)
                    : tr("A program that people cannot read, %1 bytes long").arg(content_.size());
}

Result<ScriptCopy> Script::copy() const
{
    return bundlePath_.isEmpty() ? ScriptCopy::ofFile(content_, QFileInfo(path_).fileName())
                                 : ScriptCopy::ofBundle(bundlePath_, content_);
}

ScriptResult Script::run(const QString &target, const QString &label, const ScriptLimits &limits) const
{
    const Result<ScriptCopy> copied = copy();
    if (!copied) {
        ScriptResult result;
        result.outcome = ScriptResult::Outcome::CouldNotStart;
        result.error = copied.error;
        return result;
    }
    const QString program = bundlePath_.isEmpty()
                                ? copied->path()
                                : copied->path() + u'/' + QDir(bundlePath_).relativeFilePath(path_);
    const QByteArray folder = QFile::encodeName(target);
    return ScriptProcess::run(QFile::encodeName(program), {folder, label.toUtf8()}, folder, limits);
}
