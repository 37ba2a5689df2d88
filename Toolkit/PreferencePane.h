// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtPlugin>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

/// The contract between a preferences host and a pane, header-only so that neither links the other.
///
/// The host calls, in this order: loadMainView(); mainViewDidLoad(); didSelect() each time the pane is shown;
/// didUnselect() each time it is left; the destructor. That a window of the process stops being the key
/// window the pane learns from the application itself.
class PreferencePane
{
public:
    virtual ~PreferencePane() = default;

    /// Makes the pane's view and returns it, or null if it cannot be made; the host owns the widget and must
    /// destroy the pane first.
    virtual QWidget *loadMainView() = 0;
    /// The view that loadMainView() made; null before.
    virtual QWidget *mainView() const = 0;
    virtual void mainViewDidLoad() = 0;
    virtual void didSelect() = 0;
    virtual void didUnselect() = 0;
};

/// What a pane's plug-in exports: a factory, so that the host decides when the pane lives.
class PreferencePaneFactory
{
public:
    virtual ~PreferencePaneFactory() = default;
    /// A new pane, owned by the caller.
    virtual PreferencePane *createPane() = 0;
};

#define QUENBY_PREFERENCE_PANE_IID "org.quenby.PreferencePaneFactory/1"
Q_DECLARE_INTERFACE(PreferencePaneFactory, QUENBY_PREFERENCE_PANE_IID)
