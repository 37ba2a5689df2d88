// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <random>

/// Makes up preset records that repeat keys and hold values of the wrong types, as XML.
class RandomRecords
{
public:
    explicit RandomRecords(unsigned seed)
        : random_(seed)
    {
    }

    QByteArray domain()
    {
        QByteArray records;
        for (unsigned i = pick(4); i > 0; --i)
            records += pick(8) == 0 ? value(0) : record();
        return "<plist><dict><key>QNBPresetsStored</key><dict><key>loaded</key><true/></dict>"
               "<key>QNBHotKeyCode</key>" +
               value(0) + "<key>QNBHotKeyFlags</key>" + value(0) + "<key>QNBPresets</key><array>" + records +
               "</array></dict></plist>";
    }
    QByteArray archive()
    {
        return "<plist><dict><key>$top</key><dict><key>root</key>" + record() +
               "</dict><key>$objects</key><array><string>$null</string></array></dict></plist>";
    }

private:
    static constexpr unsigned deepest = 6;

    unsigned pick(unsigned count) { return unsigned(random_()) % count; }

    QByteArray record()
    {
        static constexpr const char *keys[] = {"label", "scriptFile", "extra", "fileHierarchy"};
        QByteArray xml = "<dict>";
        for (unsigned i = 1 + pick(6); i > 0; --i) {
            const unsigned key = pick(4);
            xml +=
                "<key>" + QByteArray(keys[key]) + "</key>" + (key == 3 && pick(6) != 0 ? item(0) : value(0));
        }
        return xml + "</dict>";
    }

    QByteArray item(unsigned depth)
    {
        static constexpr const char *keys[] = {"filename",        "isFolder",    "color",
                                               "contentFilename", "permissions", "uid",
                                               "other",           "children",    "children"};
        QByteArray xml = "<dict>";
        for (unsigned i = pick(8); i > 0; --i) {
            const unsigned key = pick(9);
            xml += "<key>" + QByteArray(keys[key]) + "</key>" +
                   (key >= 7 && depth < deepest && pick(6) != 0 ? items(depth + 1) : value(depth + 1));
        }
        return xml + "</dict>";
    }

    QByteArray items(unsigned depth)
    {
        QByteArray xml = "<array>";
        for (unsigned i = pick(5); i > 0; --i)
            xml += pick(8) == 0 ? value(depth) : item(depth);
        return xml + "</array>";
    }

    QByteArray value(unsigned depth)
    {
        static constexpr const char *scalars[] = {"<true/>",
                                                  "<integer>-5</integer>",
                                                  "<integer>18446744073709551615</integer>",
                                                  "<string/>",
                                                  "<string>764</string>",
                                                  "<string>&#228;/..</string>",
                                                  "<real>1e999</real>",
                                                  "<data>AAEC</data>",
                                                  "<date>2001-01-01T00:00:00Z</date>"};
        const unsigned kind = pick(11);
        if (kind < 9)
            return scalars[kind];
        if (depth > deepest)
            return "<array/>";
        return kind == 9 ? items(depth + 1) : item(depth + 1);
    }

    std::mt19937 random_;
};
