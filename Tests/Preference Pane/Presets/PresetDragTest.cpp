// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/Command.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/XPointer.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <memory>

// Dragging with a real pointer of a real X server.
class PresetDragTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aPresetIsDraggedOutAsItsFile();
};

namespace {

const QString player = QStringLiteral("Player");

QVariantMap preset(const QString &shortcut)
{
    return {{QStringLiteral("bundleid"), QStringLiteral("org.player")},
            {QStringLiteral("keys"), QVariantMap{{QStringLiteral("play"), shortcut}}}};
}

// Another window, on which files are dropped.
class DropTarget : public QWidget {
public:
    DropTarget() { setAcceptDrops(true); }
    QStringList dropped;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override { event->acceptProposedAction(); }
    void dragMoveEvent(QDragMoveEvent *event) override
    {
        event->acceptProposedAction();
        if (m_release == nullptr) {
            m_release = std::make_unique<test::Command>(
                QStringLiteral("xdotool"),
                QStringList{QStringLiteral("mouseup"), QStringLiteral("1")});
        }
    }
    void dropEvent(QDropEvent *event) override
    {
        for (const QUrl &url : event->mimeData()->urls()) {
            dropped.append(url.toLocalFile());
        }
        event->acceptProposedAction();
    }

private:
    std::unique_ptr<test::Command> m_release;
};

} // namespace

void PresetDragTest::aPresetIsDraggedOutAsItsFile()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    PresetFixture::writeUser(QStringLiteral("Viewer"), preset(QStringLiteral("V")));
    Page page(fixture);
    page.window().setGeometry(50, 50, 700, 500);
    page.show();
    DropTarget target;
    target.setGeometry(800, 100, 200, 200);
    target.show();
    QVERIFY(QTest::qWaitForWindowExposed(&target));
    auto *viewport = page.applications()->viewport();
    const auto row = page.applications()->visualRect(page.applications()->model()->index(1, 0));
    XPointer pointer(*viewport);
    QVERIFY(pointer.moveTo(row.center()));
    QVERIFY(pointer.press());
    QVERIFY(pointer.moveTo(row.center() + QPoint(0, 30)));
    // A program of its own: while something is dragged, this one waits for the drop.
    const QPoint to = target.mapToGlobal(target.rect().center());
    QStringList moves;
    for (int move = 0; move < 100; ++move) {
        moves += {QStringLiteral("mousemove"), QString::number(to.x() + move % 10),
                  QString::number(to.y()), QStringLiteral("sleep"), QStringLiteral("0.1")};
    }
    const test::Command mouse(QStringLiteral("xdotool"), moves);
    QTRY_COMPARE_WITH_TIMEOUT(
        target.dropped, QStringList{PresetFixture::userPath(QStringLiteral("Viewer"))}, 20000);
    QCOMPARE(page.shownTitles(), (QStringList{player, QStringLiteral("Viewer")}));
}

TEST_CLASS(PresetDragTest, QApplication)
#include "PresetDragTest.moc"
