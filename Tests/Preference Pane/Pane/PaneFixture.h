// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Preference Pane/Switch/ZQSwitch.h"

#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QVariantMap>

#include <chrono>
#include <memory>

// A pane in a window, with the real files at their real paths in the sandbox and real processes of
// the listener's name.
class PaneFixture {
public:
    // Removes what an earlier test left; the pane's second lasts this long.
    explicit PaneFixture(std::chrono::milliseconds second = std::chrono::milliseconds(1000));
    ~PaneFixture();
    PaneFixture(const PaneFixture &) = delete;
    PaneFixture &operator=(const PaneFixture &) = delete;

    void setInfo(const QVariantMap &info);
    QString bundlePath() const { return m_folder.filePath(QStringLiteral("Ostrel.prefPane")); }
    static void installJob();
    static void removeJob();
    // Runs an executable of this name until the fixture goes.
    void runProcess(const QString &name);
    static void writePreferences(const QVariantMap &preferences);
    static void writePreferencesBytes(const QByteArray &bytes);
    static QVariantMap preferences();
    static QString preferencesFolder();
    static QString preferencesPath();

    void open();
    void close();
    // The window stays.
    void closePane() { m_pane.reset(); }
    // Waits for the end of the start-up version check, from which on the switch acts.
    void waitUntilLoaded() const;
    // Waits for the end of a start or stop.
    void waitUntilIdle() const;
    // Posts a status as the listener does, by a program of another maker.
    static void emitStatus(const QByteArray &word);
    static void emitUserInfo(const QByteArray &variantText);
    // Any signal of three arguments, the second of which is an empty text.
    static void emitSignal(const QString &path, const QString &signal, const QString &name,
                           const QByteArray &variantText);

    Ostrel_Preference_Pane &pane() { return *m_pane; }
    QMainWindow &window() { return *m_window; }
    ZQSwitch &masterSwitch() const { return *control<ZQSwitch>("masterSwitch"); }
    QString status() const;
    QString notice() const;
    template <typename T>
    T *control(const char *name) const
    {
        auto *found = m_window->findChild<T *>(QString::fromLatin1(name));
        Q_ASSERT(found != nullptr);
        return found;
    }
    // Sets the line as a status arriving during a start would, so that nothing follows from it.
    void showStatusOnly(const QString &word) const;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<Ostrel_Preference_Pane> m_pane;
    std::vector<std::unique_ptr<QProcess>> m_processes;
};
