#include "SidebarFixture.h"

#include "settings/L10n.h"
#include "support/Await.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPointer>
#include <QQmlProperty>
#include <QSignalSpy>

#include <cmath>

using namespace talvenor;
using test::completedRecording;
using test::RenderedScene;
using test::Sidebar;
using test::waitUntil;

namespace {

/// Every row that has been made, used at the moment or not.
int madeRows(const Sidebar &bar)
{
    const auto *const content = bar.list.property("contentItem").value<QQuickItem *>();
    int count = 0;
    for (const QQuickItem *const child : content->childItems())
        count += child->property("recordingId").isValid() ? 1 : 0;
    return count;
}

/// What each row on the screen shows, with its place in the window.
QMap<QString, double> seen(const Sidebar &bar)
{
    QMap<QString, double> places;
    for (int row = 0; row < bar.model.rowCount(); ++row) {
        const QQuickItem *const item = bar.rowItem(row);
        if (!item || !item->isVisible())
            continue;
        const QRectF place = RenderedScene::rect(*item);
        if (place.bottom() > bar.rect("recordingList").top() &&
            place.top() < bar.rect("recordingList").bottom())
            places.insert(item->property("recordingId").toString(), place.top());
    }
    return places;
}

QStringList shownTitles(const Sidebar &bar)
{
    bar.settle();
    QStringList titles;
    for (int row = 0; row < bar.model.rowCount(); ++row)
        titles.append(bar.row(row).property("title").toString());
    return titles;
}

QObject &menuOf(const Sidebar &bar)
{
    for (QObject *const child : bar.scene.root().findChildren<QObject *>()) {
        if (child->inherits("QQuickMenu"))
            return *child;
    }
    qFatal("there is no menu");
}

/// The texts of the menu's entries, "-" for the divider.
QStringList entriesOf(const Sidebar &bar)
{
    QObject &menu = menuOf(bar);
    QStringList entries;
    for (int i = 0; i < menu.property("count").toInt(); ++i) {
        QQuickItem *item = nullptr;
        QMetaObject::invokeMethod(&menu, "itemAt", Q_RETURN_ARG(QQuickItem *, item), Q_ARG(int, i));
        entries.append(item->inherits("QQuickMenuSeparator") ? QStringLiteral("-")
                                                             : item->property("text").toString());
    }
    return entries;
}

QQuickItem &entryOf(const Sidebar &bar, const QString &text)
{
    QObject &menu = menuOf(bar);
    for (int i = 0; i < menu.property("count").toInt(); ++i) {
        QQuickItem *item = nullptr;
        QMetaObject::invokeMethod(&menu, "itemAt", Q_RETURN_ARG(QQuickItem *, item), Q_ARG(int, i));
        if (item->property("text").toString() == text)
            return *item;
    }
    qFatal("the menu has no \"%s\"", qPrintable(text));
}

bool isMenuOpen(const Sidebar &bar)
{
    return menuOf(bar).property("opened").toBool();
}

QString iconOf(QQuickItem &entry)
{
    return QQmlProperty::read(&entry, QStringLiteral("icon.name")).toString();
}

void openMenu(const Sidebar &bar, int row)
{
    bar.scene.click(RenderedScene::rect(bar.row(row)).center(), Qt::RightButton);
    QVERIFY(waitUntil([&] { return isMenuOpen(bar); }));
    bar.settle(); // the entries find their places
}

void closeMenu(const Sidebar &bar)
{
    bar.scene.press(Qt::Key_Escape);
    QVERIFY(waitUntil([&] { return !menuOf(bar).property("visible").toBool(); }));
}

} // namespace

/// What the sidebar does under pointer, keyboard and assistive technology.
class SidebarUseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWideButtonNeverStartsARecording()
    {
        Sidebar bar(test::numberedRecordings(3));
        bar.fixture.signIn();
        bar.scene.click(bar.row(1));
        QVERIFY(bar.viewModel.hasSelection());
        bar.scene.click(bar.item("wideButton"));
        QVERIFY(!bar.viewModel.hasSelection());
        bar.scene.click(bar.item("wideButton")); // with nothing selected
        QCoreApplication::processEvents();
        QVERIFY(!bar.viewModel.isRecording());
        QCOMPARE(bar.viewModel.recordings().size(), 3);

        bar.viewModel.toggleRecording();
        QVERIFY(waitUntil([&] { return bar.viewModel.isRecording(); }));
        bar.item("wideButton").forceActiveFocus(Qt::TabFocusReason);
        bar.scene.press(Qt::Key_Return);
        QVERIFY(!bar.viewModel.isRecording());
        QCOMPARE(bar.viewModel.recordings().first().status, RecordingStatus::completed);
        QVERIFY(bar.viewModel.hasSelection()); // stopping leaves the selection
    }

    void aClickSelectsWhateverPartOfTheRowItHits()
    {
        Sidebar bar(test::numberedRecordings(3));
        const QRectF place = RenderedScene::rect(bar.row(1));
        for (const QPointF point :
             {place.topLeft() + QPointF(1, 1), place.bottomRight() - QPointF(2, 2), place.center()}) {
            bar.viewModel.setSelectedRecording(std::nullopt);
            bar.scene.click(point);
            QVERIFY(bar.viewModel.hasSelection());
            QCOMPARE(bar.viewModel.selectedRecording()->title, QStringLiteral("Meeting 1"));
            QVERIFY(bar.row(1).property("isSelected").toBool());
            QVERIFY(!bar.row(0).property("isSelected").toBool());
        }
    }

    void theSearchFiltersAndItsButtonEmptiesIt()
    {
        Sidebar bar({completedRecording(QStringLiteral("Budget 2027")),
                     completedRecording(QStringLiteral("Interview")),
                     completedRecording(QStringLiteral("Die Straße"))});
        bar.search(QStringLiteral("BUD"));
        QCOMPARE(shownTitles(bar), QStringList{QStringLiteral("Budget 2027")});
        bar.scene.click(bar.item("clearSearch"));
        QCOMPARE(bar.model.rowCount(), 3);
        QVERIFY(bar.item("searchInput").hasActiveFocus());
        bar.scene.type(QStringLiteral(" "));
        QCOMPARE(shownTitles(bar),
                 (QStringList{QStringLiteral("Budget 2027"), QStringLiteral("Die Straße")}));
        bar.scene.press(Qt::Key_Backspace);
        bar.scene.type(QStringLiteral("SS"));
        QCOMPARE(shownTitles(bar), QStringList{QStringLiteral("Die Straße")});
        bar.scene.type(QStringLiteral("x"));
        QVERIFY(!bar.list.isVisible());
        QVERIFY(bar.item("emptyState").isVisible());
        bar.scene.click(bar.item("clearSearch"));
        QVERIFY(bar.list.isVisible());
        QCOMPARE(shownTitles(bar).size(), 3);
        // By assistive technology, in both languages.
        bar.scene.type(QStringLiteral("b"));
        QAccessibleInterface *const clear =
            bar.scene.accessible(QAccessible::Button, QStringLiteral("Clear Search"));
        QVERIFY(clear);
        RenderedScene::setLanguage(AppLanguage::german);
        QCOMPARE(clear->text(QAccessible::Name), QStringLiteral("Suche leeren"));
        clear->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(bar.model.rowCount(), 3);
    }

    void whatIsTypedIsFilteredFromTheTop()
    {
        Sidebar bar(test::numberedRecordings(200));
        bar.scrollTo(3000);
        bar.search(QStringLiteral("1"));
        bar.settle();
        QCOMPARE(bar.scrolled(), -6.0);
        QCOMPARE(RenderedScene::rect(bar.row(0)).top(), bar.rect("recordingList").top() + 6);
    }

    void aMegabyteIsPastedAndTakenAwayAgain()
    {
        Sidebar bar(test::numberedRecordings(50));
        const QString much =
            QStringLiteral("Line of text\r\n\t\u0007 with 🎉 and ‫עברית‬.\n").repeated(30'000);
        QVERIFY(much.size() > 1'000'000);
        QGuiApplication::clipboard()->setText(much);
        bar.item("searchInput").forceActiveFocus(Qt::TabFocusReason);
        bar.scene.press(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(bar.model.rowCount(), 0);
        QCOMPARE(bar.model.searchText().size(), 10'000);
        QVERIFY(much.startsWith(bar.model.searchText()));
        bar.settle();
        QVERIFY(bar.item("emptyState").isVisible());
        bar.scene.type(QStringLiteral("x"));
        bar.settle();
        bar.scene.click(bar.item("clearSearch"));
        bar.settle();
        QCOMPARE(bar.model.rowCount(), 50);
    }

    void theMenuHasWhatAppliesInItsOrder()
    {
        using test::withStatus;
        using test::withSummary;
        using test::withTranscript;
        const Recording plain = completedRecording(QStringLiteral("x"));
        const QStringList least{QStringLiteral("Export"), QStringLiteral("-"), QStringLiteral("Delete")};
        const QStringList transcribe{QStringLiteral("Export"), QStringLiteral("Transcribe"),
                                     QStringLiteral("-"), QStringLiteral("Delete")};
        const QStringList summarize{QStringLiteral("Export"), QStringLiteral("Summarize"),
                                    QStringLiteral("-"), QStringLiteral("Delete")};
        QList<QPair<Recording, QStringList>> cases{{plain, transcribe},
                                                   {withSummary(plain), transcribe},
                                                   {withTranscript(plain), summarize},
                                                   {withSummary(withTranscript(plain)), least}};
        for (const RecordingStatus status : {RecordingStatus::recording, RecordingStatus::transcribing,
                                             RecordingStatus::summarizing, RecordingStatus::failed}) {
            cases.append({withStatus(plain, status), least});
            cases.append({withStatus(withTranscript(plain), status), least});
        }
        QList<Recording> recordings;
        for (auto &one : cases) {
            one.first.id = QUuid::createUuid();
            recordings.append(one.first);
        }
        Sidebar bar(recordings, {300, 900});
        bar.settle();
        for (int row = 0; row < cases.size(); ++row) {
            openMenu(bar, row);
            QCOMPARE(entriesOf(bar), cases.at(row).second);
            closeMenu(bar);
        }
    }

    void theMenusEntriesHaveSymbolsAndOneIsDestructive()
    {
        Sidebar bar({completedRecording(QStringLiteral("bare")),
                     test::withTranscript(completedRecording(QStringLiteral("transcribed")))});
        RenderedScene::setLanguage(AppLanguage::german);
        openMenu(bar, 0);
        QCOMPARE(entriesOf(bar), (QStringList{QStringLiteral("Exportieren"), QStringLiteral("Transkribieren"),
                                              QStringLiteral("-"), QStringLiteral("Löschen")}));
        QCOMPARE(iconOf(entryOf(bar, QStringLiteral("Exportieren"))), QStringLiteral("square.and.arrow.up"));
        QCOMPARE(iconOf(entryOf(bar, QStringLiteral("Transkribieren"))), QStringLiteral("text.bubble"));
        QQuickItem &remove = entryOf(bar, QStringLiteral("Löschen"));
        QCOMPARE(iconOf(remove), QStringLiteral("trash"));
        QVERIFY(remove.property("isDestructive").toBool());
        QVERIFY(!entryOf(bar, QStringLiteral("Exportieren")).property("isDestructive").toBool());
        closeMenu(bar);
        openMenu(bar, 1);
        QCOMPARE(iconOf(entryOf(bar, QStringLiteral("Zusammenfassen"))), QStringLiteral("sparkles"));
    }

    void aDoubleClickOnDeleteDeletesOneRecording()
    {
        Sidebar bar(test::numberedRecordings(6));
        openMenu(bar, 1);
        const QPointF place = RenderedScene::rect(entryOf(bar, QStringLiteral("Delete"))).center();
        bar.scene.click(place);
        bar.scene.click(place);
        QTest::mouseDClick(&bar.scene.window(), Qt::LeftButton, {}, place.toPoint());
        QCoreApplication::processEvents();
        QCOMPARE(bar.viewModel.recordings().size(), 5);
        QVERIFY(!shownTitles(bar).contains(QStringLiteral("Meeting 1")));
    }

    void aDoubleClickOnExportAsksOnce()
    {
        Sidebar bar({completedRecording(QStringLiteral("a/b"))});
        bar.fixture.signIn();
        openMenu(bar, 0);
        const QPointF place = RenderedScene::rect(entryOf(bar, QStringLiteral("Export"))).center();
        bar.scene.click(place);
        bar.scene.click(place);
        QCoreApplication::processEvents();
        QCOMPARE(bar.fixture.panels->panels.size(), 1);
        QCOMPARE(bar.fixture.panels->panels.first().request.nameFieldStringValue, QStringLiteral("a/b.md"));
    }

    void deletingTheSelectedRecordingBringsBackTheRecordScreen()
    {
        Sidebar bar(test::numberedRecordings(3));
        bar.scene.click(bar.row(1));
        openMenu(bar, 0); // another one: the selection stays
        bar.scene.click(entryOf(bar, QStringLiteral("Delete")));
        QCOMPARE(bar.viewModel.selectedRecording()->title, QStringLiteral("Meeting 1"));
        QVERIFY(waitUntil([&] { return !menuOf(bar).property("visible").toBool(); }));
        openMenu(bar, 0);
        bar.scene.click(entryOf(bar, QStringLiteral("Delete")));
        QVERIFY(!bar.viewModel.hasSelection());
        QCOMPARE(shownTitles(bar), QStringList{QStringLiteral("Meeting 2")});
    }

    void theKeyboardMovesThroughTheList()
    {
        Sidebar bar(test::numberedRecordings(100));
        const auto current = [&bar] { return bar.model.currentRow(); };
        const auto isInView = [&bar](int row) {
            const QRectF place = RenderedScene::rect(bar.row(row));
            return bar.rect("recordingList").contains(place);
        };
        bar.item("wideButton").forceActiveFocus(Qt::TabFocusReason);
        bar.scene.press(Qt::Key_Tab);
        QVERIFY(bar.item("searchInput").hasActiveFocus());
        bar.scene.press(Qt::Key_Tab);
        QVERIFY(bar.list.hasActiveFocus());
        QCOMPARE(current(), 0);
        QVERIFY(bar.item("rowRing").isVisible());
        QVERIFY(bar.row(0).hasActiveFocus());
        bar.scene.press(Qt::Key_Up);
        QCOMPARE(current(), 0);
        bar.scene.press(Qt::Key_Down);
        QCOMPARE(current(), 1);
        QVERIFY(bar.row(1).hasActiveFocus());
        QVERIFY(!bar.viewModel.hasSelection());
        bar.scene.press(Qt::Key_Space);
        QCOMPARE(bar.viewModel.selectedRecording()->title, QStringLiteral("Meeting 1"));
        bar.scene.press(Qt::Key_PageDown);
        const int page = current() - 1;
        QVERIFY(page >= 5 && page < 10);
        QVERIFY(isInView(current()));
        bar.scene.press(Qt::Key_End);
        QCOMPARE(current(), 99);
        QVERIFY(isInView(99));
        bar.scene.press(Qt::Key_PageUp);
        QCOMPARE(current(), 99 - page);
        bar.scene.press(Qt::Key_Return);
        QCOMPARE(bar.viewModel.selectedRecording()->title, QStringLiteral("Meeting %1").arg(99 - page));
        bar.scene.press(Qt::Key_Home);
        QCOMPARE(current(), 0);
        QCOMPARE(bar.scrolled(), -6.0);
        bar.scene.press(Qt::Key_Enter);
        QCOMPARE(bar.viewModel.selectedRecording()->title, QStringLiteral("Meeting 0"));
        // What deletes without asking is not on a key that is hit by chance.
        bar.scene.press(Qt::Key_Delete);
        bar.scene.press(Qt::Key_Backspace);
        QCOMPARE(bar.viewModel.recordings().size(), 100);
        bar.scene.press(Qt::Key_Backtab);
        QVERIFY(bar.item("searchInput").hasActiveFocus());
        QVERIFY(!bar.item("rowRing").isVisible());
        // The pointer leaves no ring.
        bar.scene.click(bar.row(2));
        QVERIFY(!bar.item("rowRing").isVisible());
        bar.scene.press(Qt::Key_Down);
        QCOMPARE(current(), 3);
        QVERIFY(bar.item("rowRing").isVisible());
    }

    void theKeyboardOpensTheMenuOfTheCurrentRow()
    {
        Sidebar bar(test::numberedRecordings(40));
        bar.list.forceActiveFocus(Qt::TabFocusReason);
        bar.scene.press(Qt::Key_Down);
        for (const auto &[key, modifier] :
             {std::pair(Qt::Key_Menu, Qt::NoModifier), std::pair(Qt::Key_F10, Qt::ShiftModifier)}) {
            bar.scene.press(key, modifier);
            QVERIFY(waitUntil([&] { return isMenuOpen(bar); }));
            QCOMPARE(menuOf(bar).property("recordingId").toString(),
                     bar.row(1).property("recordingId").toString());
            closeMenu(bar);
            QVERIFY(bar.list.hasActiveFocus());
        }
        bar.scene.press(Qt::Key_F10);
        QCoreApplication::processEvents();
        QVERIFY(!menuOf(bar).property("visible").toBool());
        // Of a row that has been scrolled away, which comes back into view.
        bar.scrollTo(1500);
        bar.scene.press(Qt::Key_Menu);
        QVERIFY(waitUntil([&] { return isMenuOpen(bar); }));
        QVERIFY(bar.rect("recordingList").contains(RenderedScene::rect(bar.row(1)).center()));
        // Down to Delete, past the divider.
        for (int i = 0; i < 3; ++i)
            bar.scene.press(Qt::Key_Down);
        bar.scene.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return bar.viewModel.recordings().size() == 39; }));
        QCOMPARE(bar.viewModel.recordings().at(1).title, QStringLiteral("Meeting 2"));
    }

    void theRowThatAssistiveTechnologyPutsTheKeyboardOnIsTheCurrentOne()
    {
        Sidebar bar(test::numberedRecordings(40));
        bar.row(3).forceActiveFocus(Qt::OtherFocusReason);
        QVERIFY(bar.row(3).hasActiveFocus());
        QCOMPARE(bar.list.property("contentY").toDouble(), -6.0);
        // Likewise while the list has the keyboard already.
        bar.row(5).forceActiveFocus(Qt::OtherFocusReason);
        QVERIFY(bar.row(5).hasActiveFocus());
        bar.scene.press(Qt::Key_Menu);
        QVERIFY(waitUntil([&] { return isMenuOpen(bar); }));
        QCOMPARE(menuOf(bar).property("recordingId").toString(),
                 bar.row(5).property("recordingId").toString());
        closeMenu(bar);
        bar.scene.press(Qt::Key_Down);
        QVERIFY(bar.row(6).hasActiveFocus());
    }

    void assistiveTechnologyIsToldOfRows()
    {
        Sidebar bar(test::recordingsOfAllMarks());
        QVERIFY(bar.scene.accessible(QAccessible::List, QStringLiteral("Recordings")));
        QAccessibleInterface *const row =
            bar.scene.accessible(QAccessible::ListItem, QStringLiteral("Budget 2027"));
        QVERIFY(row);
        QCOMPARE(row->text(QAccessible::Description), bar.viewModel.recordings().at(2).formattedDate() +
                                                          QStringLiteral(", 01:05, Summarizing..."));
        RenderedScene::setLanguage(AppLanguage::german);
        QVERIFY(row->text(QAccessible::Description).endsWith(QStringLiteral(", 01:05, Zusammenfassung...")));
        QVERIFY(row->state().selectable);
        QVERIFY(!row->state().selected);
        row->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(bar.viewModel.selectedRecording()->title, QStringLiteral("Budget 2027"));
        QVERIFY(row->state().selected);
        QVERIFY(row->state().focused);
        bar.viewModel.setSelectedRecording(std::nullopt);
        QVERIFY(!row->state().selected);
    }

    void titlesOfEveryKindStayInTheirLine_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("name");
        const QString substitute; // what a title stands for that says nothing
        const auto same = [](const char *kind, const QString &title) {
            QTest::newRow(kind) << title << title << title;
        };
        same("markup", QStringLiteral("<b>Bold</b> &amp; <img src='file:///etc/passwd'>"));
        same("right to left", QStringLiteral("פגישה שבועית עם הצוות"));
        same("emoji", QStringLiteral("🎉👩‍💻 Party 🇩🇪"));
        same("tall marks", QStringLiteral("Z\u0351\u036b\u0343\u036aa\u0351\u036b\u0343\u036al"));
        QTest::newRow("breaks") << QStringLiteral("one\ntwo\r\nthree\u2028four\u2029five\u0085six")
                                << QStringLiteral("one two  three four five six")
                                << QStringLiteral("one two  three four five six");
        QTest::newRow("controls") << QStringLiteral("a\tb\u0007c\u001bd") << QStringLiteral("a b c d")
                                  << QStringLiteral("a b c d");
        QTest::newRow("empty") << QString() << QString() << substitute;
        QTest::newRow("spaces") << QStringLiteral("  ") << QStringLiteral("  ") << substitute;
        QTest::newRow("break alone") << QStringLiteral("\n") << QStringLiteral(" ") << substitute;
        const QString longTitle = QStringLiteral("A title that goes on and on, ").repeated(40'000);
        QTest::newRow("long") << longTitle << longTitle.first(500) + u'…' << longTitle;
        const QString pairs = QStringLiteral("x") + QStringLiteral("🎉").repeated(400);
        QTest::newRow("cut between characters") << pairs << pairs.first(499) + u'…' << pairs;
    }

    void titlesOfEveryKindStayInTheirLine()
    {
        QFETCH(QString, title);
        QFETCH(QString, shown);
        QFETCH(QString, name);
        Sidebar bar({completedRecording(QStringLiteral("Before")), completedRecording(title),
                     completedRecording(QStringLiteral("After"))});
        const Recording &recording = bar.viewModel.recordings().at(1);
        const QQuickItem &row = bar.row(1);
        const QQuickItem &text = Sidebar::part(row, "rowTitle");
        QCOMPARE(text.property("text").toString(), shown);
        QCOMPARE(text.property("lineCount").toInt(), 1);
        QCOMPARE(row.height(), 52.0);
        QCOMPARE(text.height(), Sidebar::part(bar.row(0), "rowTitle").height());
        QVERIFY(text.property("contentWidth").toDouble() <= text.width());
        // Where the text begins, whatever its direction.
        QCOMPARE(text.property("effectiveHorizontalAlignment").toInt(), int(Qt::AlignLeft));
        const QString spoken = name.isEmpty() ? L10n::meetingTitle(recording.formattedDate()) : name;
        QCOMPARE(RenderedScene::accessible(bar.row(1))->text(QAccessible::Name), spoken);
        bar.scene.click(row);
        QCOMPARE(bar.viewModel.selectedRecording()->title, title);
        // It is found by what it really is.
        bar.model.setSearchText(title);
        if (title.trimmed().size() > 2) {
            QCOMPARE(bar.model.rowCount(), 1);
        }
    }

    void onlyRowsThatCanBeSeenAreMade()
    {
        Sidebar bar(test::numberedRecordings(10'000));
        QCOMPARE(bar.list.property("count").toInt(), 10'000);
        const int before = madeRows(bar);
        QVERIFY2(before <= 12, qPrintable(QString::number(before)));
        for (int i = 0; i < 60; ++i)
            bar.scrollTo(i * 73);
        bar.scrollTo(400'000);
        bar.list.forceActiveFocus(Qt::TabFocusReason);
        bar.scene.press(Qt::Key_End);
        bar.search(QStringLiteral("7"));
        bar.settle();
        const int after = madeRows(bar);
        QVERIFY2(after <= 26, qPrintable(QString::number(after)));
    }

    void aChangeOfOneRecordingTouchesItsRowOnly()
    {
        Sidebar bar(test::numberedRecordings(300));
        bar.scrollTo(2000);
        const QMap<QString, double> before = seen(bar);
        const int row = static_cast<int>(bar.scrolled() / 54) + 3;
        QQuickItem *const item = bar.rowItem(row);
        QSignalSpy changes(&bar.model, &QAbstractItemModel::dataChanged);
        QSignalSpy resets(&bar.model, &QAbstractItemModel::modelReset);
        QSignalSpy removals(&bar.model, &QAbstractItemModel::rowsRemoved);
        bar.viewModel.renameRecording(bar.viewModel.recordings().at(row), QStringLiteral("Other"));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().at(0).toModelIndex().row(), row);
        QCOMPARE(changes.first().at(1).toModelIndex().row(), row);
        QCOMPARE(resets.size() + removals.size(), 0);
        bar.settle();
        QCOMPARE(bar.rowItem(row), item);
        QCOMPARE(item->property("title").toString(), QStringLiteral("Other"));
        QCOMPARE(seen(bar), before);
        // What a row does not show changes none.
        bar.viewModel.addParticipant(bar.viewModel.recordings().at(row), QStringLiteral("Susan"));
        QCOMPARE(changes.size(), 1);
    }

    void whatIsSeenStaysWhereItIs()
    {
        Sidebar bar(test::numberedRecordings(300));
        bar.fixture.signIn();
        bar.scrollTo(3000);
        const QMap<QString, double> before = seen(bar);
        QVERIFY(before.size() >= 8);
        // A session begins: its entry comes in at the top and is selected.
        bar.viewModel.toggleRecording();
        QVERIFY(waitUntil([&] { return bar.viewModel.isRecording(); }));
        QCOMPARE(bar.model.rowCount(), 301);
        bar.settle();
        QCOMPARE(seen(bar), before);
        bar.viewModel.stopRecording();
        bar.settle();
        QCOMPARE(seen(bar), before);
        // It goes again, and so does one below.
        bar.viewModel.deleteRecording(bar.viewModel.recordings().first());
        bar.settle();
        QCOMPARE(seen(bar), before);
        bar.viewModel.deleteRecording(bar.viewModel.recordings().last());
        bar.settle();
        QCOMPARE(seen(bar), before);
        // The selection of a row that is not in view leaves it so.
        bar.viewModel.setSelectedRecording(bar.viewModel.recordings().first());
        bar.settle();
        QCOMPARE(seen(bar), before);
    }

    void atTheTopANewEntryIsSeen()
    {
        Sidebar bar(test::numberedRecordings(300));
        bar.fixture.signIn();
        bar.settle();
        bar.viewModel.toggleRecording();
        QVERIFY(waitUntil([&] { return bar.viewModel.isRecording(); }));
        bar.settle();
        QCOMPARE(RenderedScene::rect(bar.row(0)).top(), bar.rect("recordingList").top() + 6);
        QVERIFY(bar.row(0).property("isSelected").toBool());
        bar.viewModel.stopRecording();
    }

    void aViewMadeAnewBeginsWithoutAFilter()
    {
        Sidebar bar(test::numberedRecordings(3));
        bar.search(QStringLiteral("1"));
        QCOMPARE(bar.model.rowCount(), 1);
        const RenderedScene again("SidebarView {}", {300, 640},
                                  {{QStringLiteral("record"), QVariant::fromValue(&bar.record)},
                                   {QStringLiteral("recordings"), QVariant::fromValue(&bar.model)}});
        QCOMPARE(bar.model.rowCount(), 3);
        QVERIFY(bar.model.searchText().isEmpty());
    }

    void theSymbolRestsWhileItsRowIsOutOfView()
    {
        QList<Recording> recordings = test::numberedRecordings(100);
        recordings.first().status = RecordingStatus::recording;
        Sidebar bar(recordings);
        QPointer<QQuickItem> symbol = &Sidebar::part(bar.row(0), "statusSymbol");
        QCOMPARE(symbol->property("isRunning"), QVariant(true));
        bar.scrollTo(3000);
        QVERIFY(!symbol || !symbol->isVisible() || !symbol->property("isRunning").toBool());
    }
};

TALVENOR_SCREEN_TEST_MAIN(SidebarUseTest)
#include "SidebarUseTest.moc"
