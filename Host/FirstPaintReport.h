// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>

#include <functional>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

/// Measures how long a program takes until its window is on screen. With the variable
/// QUENBY_REPORT_FIRST_PAINT set, the time of the first paint (nanoseconds of CLOCK_MONOTONIC, which the
/// program that starts this one can read too) is written to the standard error as `first-paint-ns: N`.
class FirstPaintReport : public QObject
{
    Q_OBJECT
public:
    /// Watches \a window, which must not be shown yet, and calls \a reported after the line is written. Does
    /// nothing, at no cost, without the variable.
    static void installIfRequested(QWidget *window, std::function<void()> reported);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    FirstPaintReport(QWidget *window, std::function<void()> reported);

    const std::function<void()> reported_;
};
