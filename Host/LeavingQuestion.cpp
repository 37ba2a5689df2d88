// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/LeavingQuestion.h"

#include "Hosting/PaneSession.h"
#include "Platform/LineText.h"
#include "Toolkit/FilePanel.h"
#include "Toolkit/PlainText.h"

#include <QCoreApplication>
#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

#include <memory>

namespace {

enum class Answer { TryAgain, SaveCopy, LeaveWithoutSaving, Stay };

QString tr(const char *text)
{
    return QCoreApplication::translate("LeavingQuestion", text);
}

Answer ask(QWidget &window, const QString &reason, const QString &copy)
{
    QString text = tr("The reason is: %1.").arg(NoticeStrip::shortReason(reason));
    if (!copy.isEmpty())
        text += QStringLiteral("\n\n") + copy;
    const std::unique_ptr<QMessageBox> box(
        PlainText::messageBox(window.windowTitle(), tr("Your changes could not be saved."), text, &window));
    box->setWindowModality(Qt::WindowModal);
    box->setAccessibleName(box->text());
    box->setAccessibleDescription(box->informativeText());

    QPushButton *tryAgain = box->addButton(tr("&Try Again"), QMessageBox::AcceptRole);
    const QPushButton *saveCopy = box->addButton(tr("&Save a Copy…"), QMessageBox::ActionRole);
    const QPushButton *leave = box->addButton(tr("Close &Without Saving"), QMessageBox::DestructiveRole);
    QPushButton *stay = box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(tryAgain);
    box->setEscapeButton(stay);
    box->exec();
    // None when the program is ending.
    const QAbstractButton *clicked = box->clickedButton();
    if (clicked == tryAgain)
        return Answer::TryAgain;
    if (clicked == saveCopy)
        return Answer::SaveCopy;
    return clicked == leave ? Answer::LeaveWithoutSaving : Answer::Stay;
}

/// What became of it, for the user; empty if none was wanted after all.
QString saveCopy(PaneSession &session, QWidget &window)
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QStringList paths =
        FilePanel{.kind = FilePanel::Kind::NewFile,
                  .title = tr("Save a Copy"),
                  .acceptButton = tr("Save"),
                  .folder = QDir(folder).filePath(tr("Copy of %1.plist").arg(window.windowTitle()))}
            .run(&window);
    if (paths.isEmpty())
        return {};
    const Result<> saved = session.saveCopy(paths.constFirst());
    return saved ? tr("A copy of all that you made is in %1.")
                       .arg(lineText(QDir::toNativeSeparators(paths.constFirst())))
                 : tr("The copy could not be saved either: %1.").arg(saved.error);
}

} // namespace

bool LeavingQuestion::mayLeave(PaneSession &session, QWidget &window)
{
    QString copy;
    for (Result<> saved = session.unselect();;) {
        if (saved)
            return true;
        switch (ask(window, saved.error, copy)) {
        case Answer::TryAgain:
            saved = session.save();
            break;
        case Answer::SaveCopy:
            copy = saveCopy(session, window);
            break;
        case Answer::LeaveWithoutSaving:
            session.giveUpSaving();
            return true;
        case Answer::Stay:
            session.select();
            return false;
        }
    }
}
