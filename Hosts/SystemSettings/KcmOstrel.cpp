// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Hosts/SystemSettings/KcmOstrel.h"

#include "Platform/Desktop/PaneLoading/PreferencePaneLoader.h"

#include <QLabel>
#include <QVBoxLayout>

#include <dlfcn.h>

#include <KPluginFactory>

K_PLUGIN_CLASS_WITH_JSON(KcmOstrel, "kcm_ostrel.json")

namespace {

// This module's own file: a build keeps the bundle in a folder above it.
QString modulePath()
{
    static const char here = 0;
    Dl_info info{};
    return dladdr(&here, &info) != 0 ? QString::fromLocal8Bit(info.dli_fname) : QString();
}

} // namespace

KcmOstrel::KcmOstrel(QWidget *parent, const QVariantList &args) : KCModule(parent, args)
{
    setButtons(NoAdditionalButton);
    auto *layout = new QVBoxLayout(this);
    const QString folder = QStringLiteral(OSTREL_PANE_FOLDER);
    const QString path =
        platform::findPreferencePane(QStringLiteral("Ostrel.prefPane"), modulePath(), folder);
    auto loaded =
        path.isNull()
            ? platform::LoadedPreferencePane{nullptr, tr("Ostrel.prefPane is not installed in %1.")
                                                          .arg(folder)}
            : platform::loadPreferencePane(path);
    if (!loaded.pane) {
        auto *error = new QLabel(loaded.error, this);
        error->setTextFormat(Qt::PlainText);
        error->setWordWrap(true);
        layout->addWidget(error);
        return;
    }
    m_pane = std::move(loaded.pane);
    auto *view = m_pane->loadMainView(this);
    // The settings application shows the module's name above it.
    if (auto *title = view->findChild<QLabel *>(QStringLiteral("titleLabel"))) {
        title->hide();
    }
    layout->addWidget(view);
}

#include "KcmOstrel.moc"
