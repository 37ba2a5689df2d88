// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Processes/NoDisplayExit.h"

#include "Platform/LineText.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

NoDisplayExit::NoDisplayExit()
{
    usual_ = qInstallMessageHandler(&NoDisplayExit::handle);
}

NoDisplayExit::~NoDisplayExit()
{
    qInstallMessageHandler(usual_);
}

void NoDisplayExit::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type != QtFatalMsg) {
        usual_(type, context, message);
        return;
    }
    const QString sentence = QCoreApplication::translate(
        "NoDisplayExit", "No window can be shown: no display answers, or Qt has no plug-in for it.");
    std::fprintf(stderr, "%s\n",
                 qPrintable(lineText(QCoreApplication::applicationName() + QLatin1String(": ") + sentence)));
    // The application is half made: nothing of it may run any more.
    std::_Exit(EXIT_FAILURE);
}
