// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include <QApplication>
#include <QMainWindow>

// The peer of ostrel-settings: an empty window with the same toolkit, style and flags.
int main(int argc, char *argv[])
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    const QApplication application(argc, argv);
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Ostrel"));
    window.resize(600, 300);
    window.show();
    return QApplication::exec();
}
