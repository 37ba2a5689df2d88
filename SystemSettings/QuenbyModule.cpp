// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneFinder.h"
#include "SystemSettings/PanePage.h"

#include <KCModule>
#include <KPluginFactory>
#include <QFileInfo>
#include <QVBoxLayout>

/// The pane as a module of KDE's System Settings. Nothing is to be applied: it saves when it is left.
class QuenbyModule : public KCModule
{
    Q_OBJECT
public:
    QuenbyModule(QObject *parent, const KPluginMetaData &data)
        : KCModule(parent, data)
    {
        setButtons(NoAdditionalButton);
        // The program deletes the widget before the module: all that it shows belongs to the widget.
        auto *const page = new PanePage(QStringLiteral("Quenby"),
                                        PaneFinder::searchFolders(QFileInfo(data.fileName()).absolutePath(),
                                                                  QStringLiteral(QUENBY_PANES_FROM_MODULE)),
                                        widget());
        auto *const layout = new QVBoxLayout(widget());
        layout->setContentsMargins({});
        layout->addWidget(page);
        widget()->setFocusProxy(page);
    }
};

K_PLUGIN_CLASS_WITH_JSON(QuenbyModule, "kcm_quenby.json")

#include "QuenbyModule.moc"
