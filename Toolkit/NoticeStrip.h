// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/PreferencePane.h"

#include <QMap>
#include <QWidget>

QT_BEGIN_NAMESPACE
class QBoxLayout;
class QLabel;
QT_END_NAMESPACE

/// The strip above a pane's view in which the pane, and what became of its saves, is told: the most important
/// notice, with its buttons. Takes no room while there is none. Every host shows the same one; none of it is
/// an alert, nothing waits for an answer.
class NoticeStrip final : public QWidget, public PreferencePaneListener
{
    Q_OBJECT

public:
    explicit NoticeStrip(QWidget *parent = nullptr);

    /// Whom Try Again asks to save. Null before the pane goes: what it has told is taken back.
    void setPane(PreferencePane *pane);

    void saved(const Result<> &result) override;
    void showNotice(const PaneNotice &notice) override;
    void takeBackNotice(PaneNotice::Kind kind) override;

    /// The part of a reason that a user can do something about: what the system said.
    static QString shortReason(const QString &reason);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showMostImportant();
    void placeButtons();

    PreferencePane *pane_ = nullptr;
    QMap<PaneNotice::Kind, PaneNotice> notices_;
    QBoxLayout *layout_ = nullptr;
    QLabel *symbol_ = nullptr;
    QLabel *text_ = nullptr;
    QWidget *buttons_ = nullptr;
};
