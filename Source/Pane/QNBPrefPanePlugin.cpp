// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"

#include <QObject>
#include <QtPlugin>

/// What the bundle's executable exports.
class QNBPrefPanePlugin final : public QObject, public PreferencePaneFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QUENBY_PREFERENCE_PANE_IID)
    Q_INTERFACES(PreferencePaneFactory)

public:
    PreferencePane *createPane() override { return new QNBPrefPanePref; }
};

#include "QNBPrefPanePlugin.moc"
