// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Result.h"
#include "Toolkit/PaneNotice.h"

#include <QStringList>
#include <QtPlugin>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

/// What a pane tells its host; called on the main thread.
class PreferencePaneListener
{
public:
    virtual ~PreferencePaneListener() = default;

    /// What became of a save: of any, whoever asked for it. Of one that has to wait until stored settings can
    /// be read, a notice says so instead.
    virtual void saved(const Result<> &result) = 0;
    /// Shows \a notice instead of the one of its kind, if there is one.
    virtual void showNotice(const PaneNotice &notice) = 0;
    /// Takes the notice of that kind back, if there is one.
    virtual void takeBackNotice(PaneNotice::Kind kind) = 0;
};

/// The contract between a preferences host and a pane, header-only so that neither links the other.
///
/// The host calls, in this order: setListener(); loadMainView(); mainViewDidLoad(); didSelect() each time the
/// pane is shown; didUnselect() each time it is left; the destructor. That a window of the process stops
/// being the key window the pane learns from the application itself, and saves. The reasons of failures are
/// in words: what was tried, from the whole to the part, and at the end, after ": ", what the system said.
class PreferencePane
{
public:
    virtual ~PreferencePane() = default;

    /// Who is told from now on; null for nobody. Must outlive the pane.
    virtual void setListener(PreferencePaneListener *listener) = 0;
    /// Makes the pane's view and returns it, or null if it cannot be made; the host owns the widget and must
    /// destroy the pane first.
    virtual QWidget *loadMainView() = 0;
    /// The view that loadMainView() made; null before.
    virtual QWidget *mainView() const = 0;
    virtual void mainViewDidLoad() = 0;
    virtual void didSelect() = 0;
    /// Saves; on failure what the user made is still there for save() and saveCopy().
    virtual Result<> didUnselect() = 0;

    /// Takes over what is being typed, and saves. For a pane whose view was made.
    virtual Result<> save() = 0;
    /// Writes all that save() would store to the file \a path, in place of what it may hold.
    virtual Result<> saveCopy(const QString &path) = 0;

    /// Takes in the files \a paths, which the user has opened, as by a drop; while the pane is selected. It
    /// tells of what it cannot take. A pane that has no files of its own does nothing.
    virtual void openFiles(const QStringList &paths) { (void)paths; }
};

/// What a pane's plug-in exports: a factory, so that the host decides when the pane lives.
class PreferencePaneFactory
{
public:
    virtual ~PreferencePaneFactory() = default;
    /// A new pane, owned by the caller.
    virtual PreferencePane *createPane() = 0;
};

#define QUENBY_PREFERENCE_PANE_IID "org.quenby.PreferencePaneFactory/3"
Q_DECLARE_INTERFACE(PreferencePaneFactory, QUENBY_PREFERENCE_PANE_IID)
