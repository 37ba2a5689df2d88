// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Helper/Launcher/PresetMatches.h"

#include <QDialog>
#include <QString>
#include <QStringList>

#include <functional>

QT_BEGIN_NAMESPACE
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE
class PlacePicker;
class PresetListView;

/// Chooses a preset by what is typed of its label, and where it is created.
class LauncherWindow : public QDialog
{
public:
    struct Handlers
    {
        /// The user wants the preset at \a place of the list, which is called \a label, in \a folders,
        /// absolute paths, of which there is one at least. The window closes after that.
        std::function<void(qsizetype place, const QString &label, const QStringList &folders)> create;
        /// The last creation is to be undone. The window closes after that, too.
        std::function<void()> undo;
        std::function<void()> openPane;
    };

    explicit LauncherWindow(Handlers handlers);
    ~LauncherWindow() override;

    /// The labels of the presets, in their order; those known last if they cannot be read now, for which
    /// \a problem is the reason then, in one line. What is typed stays, and so does the chosen preset; if it
    /// is not there any more, none is chosen.
    void setPresets(const QStringList &labels, const QString &problem = {});
    /// See PlacePicker.
    void setPlaces(const QStringList &named, const QStringList &recent);
    /// Whether there is a creation to be undone.
    void setCanUndo(bool canUndo);
    /// Gives the keyboard to the field. What was typed is selected, to be typed over.
    void beginTyping();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void layOut();
    /// None if \a row is negative.
    void choose(int row);
    void tellChoice();
    void filter(const QString &typed);
    void create();

    const Handlers handlers_;
    PresetMatches presets_;
    QString problem_;
    QLineEdit *field_;
    PresetListView *list_;
    PlacePicker *places_;
    QPushButton *create_;
    QPushButton *undo_;
    QPushButton *openPane_;
};
