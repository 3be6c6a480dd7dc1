// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// The page of presets with 500 presets of 60 keys: until its first full paint, beside plistlib
// reading the same files; a captured shortcut until it is written and announced, beside the
// replacing of a file of that size by itself; a letter typed into a filter of 5,000 rows until the
// repaint is done.
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Presets/KeyboardLayoutPage.h"
#include "Preference Pane/Presets/PresetTableView.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int presetCount = 500;
constexpr int keyCount = 60;
constexpr int rowCount = 5000;
constexpr int rounds = 11;
constexpr double perMillisecond = 1e6; // nanoseconds

double median(QList<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

QVariantMap makePreset(int number)
{
    QVariantMap keys;
    for (int key = 0; key < keyCount; ++key) {
        keys[QStringLiteral("key-%1").arg(key)] =
            QVariantMap{{QStringLiteral("val"), QStringLiteral("Ctrl+Shift+%1").arg(key)},
                        {QStringLiteral("keycode"), key},
                        {QStringLiteral("modifiers"), 0x60000}};
    }
    const QString identifier = QStringLiteral("org.example.application%1.desktop").arg(number);
    QVariantMap preset = presets::blank(QStringLiteral("Application %1").arg(number), identifier);
    preset[presets::keysKey] = keys;
    return preset;
}

void makeFiles(const platform::Bundle &bundle)
{
    QDir().mkpath(presets::userFolder());
    QDir().mkpath(presets::defaultFolder(bundle));
    for (int number = 0; number < presetCount; ++number) {
        platform::writeDictionaryToFile(
            makePreset(number), presets::userFile(QStringLiteral("Application %1").arg(number)));
    }
    QVariantList names;
    for (int key = 0; key < keyCount; ++key) {
        names.append(QVariantMap{{QStringLiteral("key"), QStringLiteral("key-%1").arg(key)},
                                 {QStringLiteral("name"), QStringLiteral("Key %1").arg(key)}});
    }
    platform::replaceFile(bundle.path() + QStringLiteral("/Contents/Resources/keynames.plist"),
                          platform::propertyListToXml(names));
}

// Milliseconds that Python's plistlib takes for reading all presets.
double plistlib()
{
    static const QString program =
        QStringLiteral("import glob, plistlib, sys, time\n"
                       "start = time.perf_counter()\n"
                       "for path in glob.glob(glob.escape(sys.argv[1]) + '/*.okl'):\n"
                       "    with open(path, 'rb') as file:\n"
                       "        plistlib.load(file)\n"
                       "print((time.perf_counter() - start) * 1000)\n");
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), program, presets::userFolder()});
    python.waitForFinished();
    return python.readAllStandardOutput().toDouble();
}

void benchmarkLoading(const platform::Bundle &bundle)
{
    QList<double> ours;
    QList<double> theirs;
    for (int round = 0; round < rounds; ++round) {
        QMainWindow window;
        auto *page = new KeyboardLayoutPage(&window);
        page->setBundle(bundle);
        window.setCentralWidget(page);
        QElapsedTimer timer;
        timer.start();
        page->load();
        window.resize(window.sizeHint());
        window.grab();
        ours.append(static_cast<double>(timer.nsecsElapsed()) / perMillisecond);
        theirs.append(plistlib());
    }
    std::printf("%d presets of %d keys to the first full paint   ours %6.1f ms   plistlib, reading "
                "alone %6.1f ms   ratio %.2f\n",
                presetCount, keyCount, median(ours), median(theirs), median(ours) / median(theirs));
}

void benchmarkCapture(const platform::Bundle &bundle)
{
    QMainWindow window;
    auto *page = new KeyboardLayoutPage(&window);
    page->setBundle(bundle);
    window.setCentralWidget(page);
    window.show();
    auto *keys = page->findChild<ZQShortcutKeyTableview *>(QStringLiteral("keyTable"));
    keys->selectOnlyRow(0);
    QList<double> ours;
    QList<double> theirs;
    const QByteArray contents = platform::propertyListToXml(makePreset(0));
    for (int round = 0; round < rounds * rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        page->editor()->keyChanged({{},
                                    {},
                                    {{QStringLiteral("keycode"), round % 50},
                                     {QStringLiteral("modifierFlags"), 0x40000}}});
        ours.append(static_cast<double>(timer.nsecsElapsed()) / perMillisecond);
        timer.start();
        platform::replaceFile(presets::userFolder() + QStringLiteral("/plain"), contents);
        theirs.append(static_cast<double>(timer.nsecsElapsed()) / perMillisecond);
    }
    std::printf("a shortcut written and announced   ours %6.2f ms   replacing the file alone %6.2f "
                "ms\n",
                median(ours), median(theirs));
}

class ManyRows : public platform::TableDataSource {
public:
    int numberOfRowsInTableView() const override { return rowCount; }
    QVariant tableViewObjectValueForTableColumn(const QString & /*column*/, int row) const override
    {
        return QStringLiteral("Application %1 of the list").arg(row);
    }
};

void benchmarkFilter()
{
    ManyRows rows;
    platform::TableView table;
    table.setColumns({{QStringLiteral("title"), QStringLiteral("Title")}});
    table.setDataSource(&rows);
    table.show();
    QList<double> times;
    for (int round = 0; round < rounds; ++round) {
        for (const auto *filter : {"1", "12", "12 l", "12 li", "", "list", "no row"}) {
            QElapsedTimer timer;
            timer.start();
            table.setFilter(QString::fromLatin1(filter));
            table.grab();
            times.append(static_cast<double>(timer.nsecsElapsed()) / perMillisecond);
        }
    }
    std::printf("a filter of %d rows typed and painted   median %6.2f ms   worst %6.2f ms\n",
                rowCount, median(times), *std::max_element(times.begin(), times.end()));
    table.setDataSource(nullptr);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    const platform::Bundle bundle(folder.path());
    makeFiles(bundle);
    benchmarkLoading(bundle);
    benchmarkCapture(bundle);
    benchmarkFilter();
}
