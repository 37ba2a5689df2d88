// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBHelperNotes.h"

#include "Platform/LineText.h"

#include <QLabel>
#include <QPointer>

#include <utility>

namespace {

const QString shortcutHintName = QStringLiteral("_shortcutHint");
const QString shortcutNoteName = QStringLiteral("_shortcutNote");
const QString trayNoteName = QStringLiteral("_trayNote");

bool isHeard(QNBHelperState::HotKey hotKey)
{
    return hotKey == QNBHelperState::HotKey::ByDesktop || hotKey == QNBHelperState::HotKey::ByPortal ||
           hotKey == QNBHelperState::HotKey::ByScreen;
}

/// Whether the keys that are set are those that are heard, as far as is known: the desktop's portal hears
/// those that it has given.
bool areTheKeysRight(const QNBHelperState &state)
{
    switch (state.hotKey) {
    case QNBHelperState::HotKey::Refused:
    case QNBHelperState::HotKey::Impossible:
    case QNBHelperState::HotKey::ByPortal:
        return false;
    default:
        return true;
    }
}

void showText(QLabel &label, const QString &text)
{
    label.setText(text);
    label.setVisible(!text.isEmpty());
}

} // namespace

QNBHelperNotes::QNBHelperNotes(QWidget &view, Ask ask, std::function<QString()> command)
    : ask_(std::move(ask))
    , command_(std::move(command))
    , shortcutHint_(view.findChild<QLabel *>(shortcutHintName))
    , shortcutNote_(view.findChild<QLabel *>(shortcutNoteName))
    , trayNote_(view.findChild<QLabel *>(trayNoteName))
{
    show(std::nullopt);
}

void QNBHelperNotes::update()
{
    ask_([notes = QPointer(this)](const std::optional<QNBHelperState> &state) {
        if (notes)
            notes->show(state);
    });
}

void QNBHelperNotes::show(const std::optional<QNBHelperState> &state)
{
    shortcutHint_->setVisible(!state || areTheKeysRight(*state));
    showText(*shortcutNote_, state ? textOf(*state) : QString());
    showText(*trayNote_, state && state->hasTray == false ? trayTextOf(*state) : QString());
}

QString QNBHelperNotes::trayTextOf(const QNBHelperState &state) const
{
    const QString command = lineText(command_());
    return isHeard(state.hotKey)
               ? tr("This desktop shows no icons of programs in a panel. The presets are reached by the "
                    "shortcut, by the command %1, by the actions of the program's entry, in the menus of "
                    "file managers, and here.")
                     .arg(command)
               : tr("This desktop shows no icons of programs in a panel. The presets are reached by the "
                    "command %1, by the actions of the program's entry, in the menus of file managers, and "
                    "here.")
                     .arg(command);
}

QString QNBHelperNotes::textOf(const QNBHelperState &state) const
{
    switch (state.hotKey) {
    case QNBHelperState::HotKey::None:
        break;
    case QNBHelperState::HotKey::ByDesktop:
        return tr("The desktop itself listens for the shortcut.");
    case QNBHelperState::HotKey::Asking:
        return tr("The desktop asks you first whether it may pass the shortcut on.");
    case QNBHelperState::HotKey::ByPortal:
        return state.keys.isEmpty()
                   ? tr("The desktop has asked you. The list of presets opens with the shortcut that is "
                        "chosen in its settings.")
                   : tr("The desktop has asked you. The list of presets opens with the shortcut as it is "
                        "chosen in its settings: %1.")
                         .arg(lineText(state.keys));
    case QNBHelperState::HotKey::ByScreen:
        return tr("The shortcut is heard whichever window has the keyboard.");
    case QNBHelperState::HotKey::Refused:
        return tr("The shortcut is not heard: the desktop does not give it, or another program has it. "
                  "Choose another one, clear it and record it again to be asked again, or bind the command "
                  "%1 to a key in the desktop's own settings.")
            .arg(lineText(command_()));
    case QNBHelperState::HotKey::Impossible:
        return tr("The shortcut is not heard: this desktop passes none on to programs. Bind the command %1 "
                  "to "
                  "a key in the desktop's own settings.")
            .arg(lineText(command_()));
    }
    return {};
}
