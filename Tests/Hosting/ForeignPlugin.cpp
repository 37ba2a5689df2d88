// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include <QFile>
#include <QObject>

/// A plug-in of another program's kind, which must never be run.
class ForeignPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.quenby.test.SomethingElse/7")
public:
    ForeignPlugin()
    {
        QFile file(qEnvironmentVariable("QUENBY_TEST_RECORD"));
        if (file.open(QIODevice::WriteOnly | QIODevice::Append))
            file.write("foreign code was run\n");
    }
};

#include "ForeignPlugin.moc"
