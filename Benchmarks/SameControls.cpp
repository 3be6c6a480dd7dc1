// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "ui_SameControls.h"

#include <QApplication>
#include <QMainWindow>

// The pane's own controls in a plain window, with the toolkit's classes in place of ours and
// nothing behind them: what any program pays that looks like the pane.
int main(int argc, char *argv[])
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    const QApplication application(argc, argv);
    QMainWindow window;
    auto *view = new QWidget(&window);
    Ui::Ostrel_Preference_Pane().setupUi(view);
    window.setCentralWidget(view);
    window.setWindowTitle(view->windowTitle());
    window.show();
    return QApplication::exec();
}
