// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A key typed into the launcher until its list is painted, among so many presets; beside a field and a list
// that the library's own filter connects. Each key counts, those that narrow the list and those that widen
// it.

#include "Benchmarks/PaintWatch.h"
#include "Helper/Launcher/LauncherWindow.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QSortFilterProxyModel>
#include <QStringListModel>
#include <QVBoxLayout>

#include <benchmark/benchmark.h>

#include <array>

namespace {

const std::array words = {QStringLiteral("Client"), QStringLiteral("Project"), QStringLiteral("Wedding"),
                          QStringLiteral("Müller & Söhne"), QStringLiteral("Archive")};
/// As a user types and takes back.
const QString typed = QStringLiteral("client 77\b\b\b\b\b\b\b\b\b");

QStringList labels(qsizetype count)
{
    QStringList result;
    for (qsizetype i = 0; i < count; ++i)
        result.append(QStringLiteral("%1 %2 %3")
                          .arg(words[std::size_t(i) % words.size()], words[std::size_t(i / 5) % words.size()],
                               QString::number(i)));
    return result;
}

class Launcher
{
public:
    explicit Launcher(const QStringList &presets)
    {
        window_.setPresets(presets);
        window_.setPlaces({}, {QStringLiteral("/some/where")});
        window_.beginTyping();
    }
    QWidget &window() { return window_; }

private:
    LauncherWindow window_{
        {.create = [](qsizetype, const QString &, const QStringList &) {}, .undo = [] {}, .openPane = [] {}}};
};

/// What the library gives for it.
class LibrarysFilter
{
public:
    explicit LibrarysFilter(const QStringList &presets)
        : model_(presets)
    {
        filter_.setSourceModel(&model_);
        filter_.setFilterCaseSensitivity(Qt::CaseInsensitive);
        auto *field = new QLineEdit;
        auto *list = new QListView;
        list->setUniformItemSizes(true);
        list->setModel(&filter_);
        QObject::connect(field, &QLineEdit::textChanged, &filter_,
                         &QSortFilterProxyModel::setFilterFixedString);
        auto *layout = new QVBoxLayout(&window_);
        layout->addWidget(field);
        layout->addWidget(list);
    }
    QWidget &window() { return window_; }

private:
    QStringListModel model_;
    QSortFilterProxyModel filter_;
    QWidget window_;
};

template <class Filter>
void BM_TypeAKey(benchmark::State &state)
{
    Filter filter(labels(state.range(0)));
    QWidget &window = filter.window();
    auto &field = *window.findChild<QLineEdit *>();
    auto &list = *window.findChild<QListView *>(QString(), Qt::FindDirectChildrenOnly);
    window.show();
    field.setFocus();
    PaintWatch watch(list);
    qsizetype next = 0;
    int fewest = list.model()->rowCount();
    for (auto _ : state) {
        const QChar key = typed[next++ % typed.size()];
        watch.begin();
        QKeyEvent press(QEvent::KeyPress, key == u'\b' ? Qt::Key_Backspace : 0, Qt::NoModifier, key);
        QCoreApplication::sendEvent(&field, &press);
        // Also where a key changes nothing.
        list.viewport()->update();
        if (!watch.waitUntilPainted()) {
            state.SkipWithError("the list is not painted");
            break;
        }
        fewest = std::min(fewest, list.model()->rowCount());
    }
    if (fewest >= state.range(0))
        state.SkipWithError("nothing was filtered");
}

} // namespace

#define QUENBY_SIZES Arg(100)->Arg(5'000)->Unit(benchmark::kMillisecond)
BENCHMARK(BM_TypeAKey<LibrarysFilter>)->QUENBY_SIZES;
BENCHMARK(BM_TypeAKey<Launcher>)->QUENBY_SIZES;
