// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/FirstPaintReport.h"
#include "Host/HostWindow.h"
#include "Hosting/InstanceGuard.h"
#include "Hosting/PaneFinder.h"
#include "Platform/Bus/BusProbe.h"
#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Desktop/HomeOwner.h"
#include "Platform/LineText.h"
#include "Platform/Processes/ExitHandler.h"
#include "Platform/Processes/NoDisplayExit.h"
#include "Platform/Processes/TerminationSignals.h"
#include "Toolkit/WindowActivation.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace std::chrono_literals;

namespace {

/// A bus that is there answers within a millisecond or two.
constexpr auto busTimeout = 300ms;
/// Another host may be busy saving.
constexpr auto otherInstanceTimeout = 2000ms;
/// Saving takes a fraction of it; what waits for a display that has gone would wait for ever.
constexpr auto exitLimit = 10s;

QString tr(const char *text)
{
    return QCoreApplication::translate("Host", text);
}

void setUp(QCommandLineParser &parser)
{
    QCoreApplication::setApplicationName(QStringLiteral("quenby-preferences"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUENBY_VERSION));
    parser.setApplicationDescription(tr("Opens a settings pane in a window of its own."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("pane"),
        tr("The pane to open: the path or the name of a .prefPane bundle. By default the only one found."),
        QStringLiteral("[pane]"));
    parser.addPositionalArgument(QStringLiteral("file"), tr("Files that the pane is to take in."),
                                 QStringLiteral("[file...]"));
}

/// Whether the program is only asked about itself, which needs no screen.
bool isQuestion(int argc, char **argv)
{
    const auto asks = [](const char *argument) {
        return !std::strcmp(argument, "-h") || !std::strcmp(argument, "--help") ||
               !std::strcmp(argument, "--help-all") || !std::strcmp(argument, "-v") ||
               !std::strcmp(argument, "--version");
    };
    return std::any_of(argv + 1, argv + std::max(argc, 1), asks);
}

/// Takes out of \a arguments, and returns, what is a file.
QStringList takeFiles(QStringList &arguments)
{
    QStringList files;
    arguments.removeIf([&](const QString &argument) {
        const bool isFile = !PaneFinder::isPane(argument);
        if (isFile)
            files.append(QFileInfo(argument).absoluteFilePath());
        return isFile;
    });
    return files;
}

QStringList searchFolders()
{
    return PaneFinder::searchFolders(QCoreApplication::applicationDirPath(),
                                     QStringLiteral(QUENBY_PANES_FROM_PROGRAMS));
}

/// The pane that was asked for by \a name; empty if none was.
Result<QString> requestedPane(const QString &name)
{
    return name.isEmpty() ? name : PaneFinder::pathOfPane(name, searchFolders());
}

void showRequestedPane(HostWindow &window, const Result<QString> &requested)
{
    if (!requested) {
        window.showError(requested.error);
        return;
    }
    if (!requested->isEmpty()) {
        window.showPane(*requested);
        return;
    }
    const QStringList folders = searchFolders();
    const QStringList panes = PaneFinder::panesIn(folders);
    if (panes.isEmpty())
        window.showError(tr("No settings pane was found in\n%1").arg(folders.join(u'\n')));
    else if (panes.size() == 1)
        window.showPane(panes.constFirst());
    else
        window.showChooser(panes);
}

} // namespace

int main(int argc, char **argv)
{
    TerminationSignals signals;
    QCommandLineParser parser;
    setUp(parser);
    if (isQuestion(argc, argv)) {
        const QCoreApplication application(argc, argv);
        parser.process(application);
        return EXIT_SUCCESS;
    }

    if (const Result<> home = HomeOwner::check(); !home) {
        std::fputs(qPrintable(linesText(home.error + u'\n')), stderr);
        return EXIT_FAILURE;
    }

    // The platform plug-in takes it away.
    const QByteArray activationToken = ActivationToken::ofThisProcess();
    BusProbe::keepLibraryFromWaiting(busTimeout);
    QGuiApplication::setDesktopFileName(QStringLiteral(QUENBY_IDENTIFIER));
    QApplication application = [&] {
        const NoDisplayExit atFailure;
        return QApplication(argc, argv);
    }();
    parser.process(application);
    QStringList arguments = parser.positionalArguments();
    const QStringList files = takeFiles(arguments);
    if (arguments.size() > 1) {
        std::fputs(qPrintable(linesText(tr("More than one pane is named.") + u'\n')), stderr);
        return EXIT_FAILURE;
    }
    const QString name = arguments.value(0);
    const Result<QString> requested = requestedPane(name);
    if (!requested)
        std::fputs(qPrintable(linesText(requested.error + u'\n')), stderr);

    InstanceGuard guard;
    // Also what is refused, so that it is not taken for a start that names no pane.
    const QString refused = name.contains(u'/') ? QFileInfo(name).absoluteFilePath() : name;
    const InstanceGuard::Outcome outcome =
        guard.begin({requested.value.value_or(refused), activationToken, files}, otherInstanceTimeout);
    if (outcome == InstanceGuard::Outcome::Handed)
        return requested ? EXIT_SUCCESS : EXIT_FAILURE;

    HostWindow window;
    bool hasSaved = true;
    const auto leave = [&] {
        // From now on a new start waits for the end of this one, and reads what it has saved.
        guard.close();
        if (!window.leave())
            hasSaved = false;
    };
    // Ends every event loop, also those of modal panels in the pane; the pane is left when none of its code
    // is running any more.
    const auto end = [] { QCoreApplication::exit(); };
    QObject::connect(&window, &HostWindow::closing, &window, end);
    QObject::connect(
        &application, &QGuiApplication::commitDataRequest, &window,
        [&] {
            // The session goes on ending as soon as this returns.
            if (QThread::currentThread()->loopLevel() == 1)
                leave();
            end();
        },
        Qt::DirectConnection);
    FirstPaintReport::installIfRequested(&window, end);

    if (outcome == InstanceGuard::Outcome::NoAnswer)
        window.showError(InstanceGuard::whyNoAnswer());
    else if (outcome == InstanceGuard::Outcome::HandedInPart)
        window.showError(tr("The settings are open already, have taken in only some of the files, and do not "
                            "answer any more. "
                            "Look there which are missing, and open those again."));
    else if (outcome == InstanceGuard::Outcome::WithoutFiles)
        window.showError(tr("The settings are open already, in an earlier version, which takes in no files. "
                            "Close its window, and open the files again."));
    else if (outcome == InstanceGuard::Outcome::TooLong)
        window.showError(
            tr("The settings are open already, and a name given here is too long to be handed to them."));
    else
        showRequestedPane(window, requested);
    window.show();
    if (outcome == InstanceGuard::Outcome::First)
        window.openFiles(files);

    guard.handleWith([&](const InstanceGuard::Request &request) {
        const Result<QString> pane = requestedPane(request.panePath);
        // Nothing is left for what is no pane; but what could not be shown may have come meanwhile.
        const bool isAnother = pane && !pane->isEmpty();
        if ((isAnother || window.showsError()) && QThread::currentThread()->loopLevel() == 1)
            showRequestedPane(window, pane);
        window.openFiles(request.files);
        WindowActivation::bringToFront(window, request.activationToken);
    });
    signals.handleWith(end);
    // Without its display the library ends the process from within the event loop.
    const ExitHandler exitHandler(
        [&] {
            guard.close();
            window.leaveWithoutDisplay();
        },
        exitLimit);
    const int result = QApplication::exec();
    leave();
    return result == EXIT_SUCCESS && !hasSaved ? EXIT_FAILURE : result;
}
