// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A program with a window for each of its arguments, which is the window's title.

#include <QApplication>
#include <QWidget>

#include <memory>
#include <vector>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    std::vector<std::unique_ptr<QWidget>> windows;
    const QStringList titles = QCoreApplication::arguments().mid(1);
    for (const QString &title : titles) {
        const auto &window = windows.emplace_back(std::make_unique<QWidget>());
        window->setWindowTitle(title);
        window->resize(200, 100);
        window->show();
    }
    return QApplication::exec();
}
