// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLineOptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("CommandLine", text);
}

const QString uniqueConflicts = QStringLiteral("unique");
const QString refusedConflicts = QStringLiteral("refuse");

/// Longer than anybody waits: an hour a day would do.
constexpr int longestScript = 24 * 60 * 60;

struct Parser
{
    QCommandLineOption list{QStringLiteral("list"), tr("Lists the presets.")};
    QCommandLineOption create{
        QStringLiteral("create"),
        tr("Creates the preset with this label; #3 is the third one of the list, if none has that label."),
        tr("preset")};
    QCommandLineOption position{QStringLiteral("position"),
                                tr("Which of the presets with this label is meant, the first one being 1. "
                                   "\"#\" begins no number then."),
                                tr("number")};
    QCommandLineOption launcher{
        QStringLiteral("launcher"),
        tr("Opens a window in which a preset is chosen and created: the running helper's, if there is one.")};
    QCommandLineOption menu{
        QStringLiteral("menu"),
        tr("The same, for folders; as file managers' entries of earlier versions call it.")};
    QCommandLineOption in{QStringLiteral("in"),
                          tr("The folder in which it is created; may be given several times."), tr("folder")};
    QCommandLineOption dryRun{QStringLiteral("dry-run"), tr("Prints what would be done, and does nothing.")};
    QCommandLineOption json{QStringLiteral("json"), tr("Prints JSON.")};
    QCommandLineOption onConflict{
        QStringLiteral("on-conflict"),
        tr("What to do where something of the same name is: \"unique\" finds another name, which is the "
           "default, \"refuse\" creates nothing."),
        tr("what"), uniqueConflicts};
    QCommandLineOption noScript{QStringLiteral("no-script"), tr("Leaves the preset's script alone.")};
    QCommandLineOption allowScript{QStringLiteral("allow-script"),
                                   tr("Lets the preset's script run, now and from now on.")};
    QCommandLineOption scriptTimeLimit{QStringLiteral("script-time-limit"),
                                       tr("Ends the script after so many seconds; by default 300."),
                                       tr("seconds")};
    QCommandLineOption notify{QStringLiteral("notify"),
                              tr("For callers without a terminal: the running helper does it, or a "
                                 "notification tells the result. A preset has to be named by its label.")};
    QCommandLineOption undo{QStringLiteral("undo"), tr("Undoes the last creation.")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, tr("Shows this text.")};
    QCommandLineOption version{{QStringLiteral("v"), QStringLiteral("version")}, tr("Shows the version.")};
    QCommandLineParser parser;

    Parser()
    {
        parser.setApplicationDescription(
            tr("Creates structures of folders and files from presets. Without arguments it runs in the "
               "background and offers the presets there."));
        parser.addOptions({list, create, position, launcher, menu, in, dryRun, json, onConflict, noScript,
                           allowScript, scriptTimeLimit, notify, undo, help, version});
    }
};

/// Whether nothing is given that only a creation can use, whatever the folders are for.
bool isFreeOfCreationOptions(const Parser &options)
{
    const QCommandLineParser &given = options.parser;
    return !given.isSet(options.position) && !given.isSet(options.dryRun) &&
           !given.isSet(options.onConflict) && !given.isSet(options.noScript) &&
           !given.isSet(options.allowScript) && !given.isSet(options.scriptTimeLimit);
}

/// What creations and the launcher have in common. What is wrong with it; empty if nothing is.
QString readFolders(const Parser &options, CommandLineOptions &result)
{
    const QCommandLineParser &given = options.parser;
    result.folders = given.values(options.in);
    if (result.folders.isEmpty() && !given.isSet(options.launcher))
        return tr("Say by --in in which folder to create it.");
    return result.folders.contains(QString()) ? tr("A folder has an empty name.") : QString();
}

/// What is wrong with the arguments of a creation; empty if nothing is.
QString readCreation(const Parser &options, CommandLineOptions &result)
{
    const QCommandLineParser &given = options.parser;
    result.preset = given.value(options.create);
    result.isDryRun = given.isSet(options.dryRun);
    result.runScript = !given.isSet(options.noScript);
    result.allowScript = given.isSet(options.allowScript);
    if (given.values(options.create).size() > 1)
        return tr("More than one preset is named.");
    if (given.isSet(options.position)) {
        bool isNumber = false;
        result.position = given.value(options.position).toInt(&isNumber);
        if (!isNumber || *result.position < 1)
            return tr("--position is a number from 1.");
    }
    if (QString problem = readFolders(options, result); !problem.isEmpty())
        return problem;
    if (result.allowScript && !result.runScript)
        return tr("--no-script and --allow-script contradict each other.");
    const QString onConflict = given.value(options.onConflict);
    if (onConflict == refusedConflicts)
        result.onConflict = Creation::OnConflict::Refuse;
    else if (onConflict != uniqueConflicts)
        return tr("--on-conflict is \"unique\" or \"refuse\".");
    if (given.isSet(options.scriptTimeLimit)) {
        bool isNumber = false;
        const int seconds = given.value(options.scriptTimeLimit).toInt(&isNumber);
        if (!isNumber || seconds < 1 || seconds > longestScript)
            return tr("--script-time-limit is a number of seconds.");
        result.scriptTimeLimit = seconds;
    }
    return {};
}

/// The same for the launcher.
QString readLauncher(const Parser &options, CommandLineOptions &result)
{
    return isFreeOfCreationOptions(options) && !result.isJson
               ? readFolders(options, result)
               : tr("Of the other options only --in and --notify go with --launcher and --menu.");
}

} // namespace

std::optional<CommandLineOptions> CommandLineOptions::parse(const QStringList &arguments, QString *error)
{
    Parser options;
    QCommandLineParser &given = options.parser;
    if (!given.parse(arguments)) {
        *error = given.errorText();
        return std::nullopt;
    }
    CommandLineOptions result;
    result.isJson = given.isSet(options.json);
    result.notify = given.isSet(options.notify);
    if (given.isSet(options.help))
        return result;
    if (given.isSet(options.version)) {
        result.command = Command::Version;
        return result;
    }

    const bool isForLauncher = given.isSet(options.launcher) || given.isSet(options.menu);
    const int commands = int(given.isSet(options.list)) + int(given.isSet(options.create)) +
                         int(given.isSet(options.launcher)) + int(given.isSet(options.menu)) +
                         int(given.isSet(options.undo));
    if (commands == 0)
        *error = tr("Say what to do: --list, --create, --launcher or --undo.");
    else if (commands > 1)
        *error = tr("Only one of --list, --create, --launcher, --menu and --undo can be done.");
    else if (!given.positionalArguments().isEmpty())
        *error = tr("What is \"%1\" for?").arg(given.positionalArguments().constFirst());
    else if (given.isSet(options.create))
        *error = readCreation(options, result);
    else if (isForLauncher)
        *error = readLauncher(options, result);
    else if (!isFreeOfCreationOptions(options) || given.isSet(options.in) ||
             (result.notify && given.isSet(options.list)))
        *error = tr("An option for --create is given without it.");
    else
        error->clear();
    if (!error->isEmpty())
        return std::nullopt;
    result.command = given.isSet(options.create) ? Command::Create
                     : isForLauncher             ? Command::Launcher
                     : given.isSet(options.list) ? Command::List
                                                 : Command::Undo;
    return result;
}

QString CommandLineOptions::help()
{
    return Parser().parser.helpText();
}
