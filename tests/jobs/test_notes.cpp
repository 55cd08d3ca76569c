// The note editor: what it saves, where the note shows, and the limit that keeps the file readable.
#include "jobs/notes.h"
#include "storage/timesheet_file.h"
#include "support/listfixture.h"

#include "core/timetext.h"

#include <QtTest>

using namespace core;
using jobs::Notewin;

class TestNotes : public QObject
{
    Q_OBJECT

    std::unique_ptr<testing::ListFixture> f;
    std::unique_ptr<jobs::Notes> notes;

    // The user replaces the text of the field and leaves through saveit.
    void typeAndSave(const QString& text, const QString& expectShown)
    {
        f->dialogs.expectModal(QStringLiteral("notewin"), [=, this](platform::ModalForm& form) {
            auto& n = static_cast<Notewin&>(form);
            QCOMPARE(n.EditField1, expectShown);
            QVERIFY(f->w.noteWinOpen);
            QVERIFY(n.EditField1_TextChange(text));
            n.saveit_Action();
        });
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }

    void init()
    {
        f = std::make_unique<testing::ListFixture>();
        notes = std::make_unique<jobs::Notes>(f->w, f->prefs, jobs::Notes::Services{f->desktop, f->dialogs, f->view});
    }

    void cleanup()
    {
        QVERIFY2(f->dialogs.errors.isEmpty(), qPrintable(f->dialogs.errors.join(QLatin1Char('\n'))));
        QVERIFY(f->dialogs.scriptDone());
    }

    void savesIntoTagAndStrip_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("typed");
        // clang-format off
        QTest::newRow("new note")                << QString()              << QStringLiteral("ring Anna\nabout the invoice");
        QTest::newRow("emptied note is removed") << QStringLiteral("old") << QString();
        QTest::newRow("accents and emoji")       << QString()              << QStringLiteral("Café \U0001F600 ok");
        // clang-format on
    }

    void savesIntoTagAndStrip()
    {
        QFETCH(QString, before);
        QFETCH(QString, typed);
        f->add(f->day(), QStringLiteral("J1"), QStringLiteral("Acme"), 10, before);
        f->add(f->day(), QStringLiteral("J2"), QStringLiteral("Acme"), 10, QStringLiteral("other"));
        f->w.setListIndex(0);
        typeAndSave(typed, before);
        notes->_notey_Action();
        QCOMPARE(f->w.ListBox1.row(0).note, typed);
        QCOMPARE(f->w.notebox.caption, typed);
        QCOMPARE(f->w.ListBox1.row(1).note, QStringLiteral("other"));
        QVERIFY(!f->w.noteWinOpen && f->w.boxchange);
    }

    void twoByteCharactersUseTheRoomTwiceAsFast()
    {
        Notewin n(f->desktop);
        n.Event_Open(QString(), QRect(0, 0, 1920, 1080));
        const QString accents(storage::kMaxFieldUtf8 / 2, QChar(0xE9));
        QVERIFY(n.EditField1_TextChange(accents));
        QVERIFY(!n.EditField1_TextChange(accents + QChar(0xE9)));
        QCOMPARE(n.EditField1, accents);
        QCOMPARE(n.roomLeft(), storage::kMaxFieldUtf8 % 2);
        QVERIFY(storage::fitsTimesheetField(n.savedText()));
    }

    void longNoteFromElsewhereCanOnlyShrink()
    {
        const QString longNote = QString(300, QLatin1Char('a')) + QStringLiteral("\U0001F600");
        f->add(f->day(), QStringLiteral("J1"), QString(), 0, longNote);
        f->w.setListIndex(0);
        f->dialogs.expectModal(QStringLiteral("notewin"), [&](platform::ModalForm& form) {
            auto& n = static_cast<Notewin&>(form);
            QCOMPARE(n.EditField1, longNote); // shown whole
            QVERIFY(!n.EditField1_TextChange(longNote + QLatin1Char('b')));
            QVERIFY(n.EditField1_TextChange(longNote.left(250)));
            QVERIFY(n.roomLeft() < 0);
            n.saveit_Action();
        });
        notes->_notey_Action();
        const QString saved = f->w.ListBox1.row(0).note;
        QVERIFY(storage::fitsTimesheetField(saved));
        QVERIFY(!storage::fitsTimesheetField(saved + QLatin1Char('a'))); // as much as fits, no less
        QVERIFY(longNote.startsWith(saved));
    }

    void noteReachesTheClientViewCopy()
    {
        f->writeClients({QStringLiteral("Acme"), QStringLiteral("Bolt")});
        for (auto [job, client] : {std::pair{"J1", "Bolt"}, {"J2", "Acme"}, {"J3", "acme"}})
            f->add(f->day(), job, client, 10);
        f->pickClient(QStringLiteral("Acme"));
        f->view.setListBox2Index(1);
        QCOMPARE(f->w.ListBox1.ListIndex, 2);

        typeAndSave(QStringLiteral("check"), QString());
        notes->_notey_Action();
        QCOMPARE(f->w.ListBox1.row(2).note + f->w.ListBox2.row(1).note, QStringLiteral("checkcheck"));
        QCOMPARE(std::pair(f->w.ListBox1.ListIndex, f->w.ListBox2.ListIndex), std::pair(2, 1)); // both stay
    }

    void stripToggleAndOneLine()
    {
        for (bool on : {true, false}) {
            QCOMPARE(notes->_shwnts_Action(on ? Tr::VMShowNotes : Tr::VMHideNotes),
                     on ? Tr::VMHideNotes : Tr::VMShowNotes);
            QVERIFY(f->w.notebox.visible == on && f->prefs.nteon == on);
        }

        f->prefs.nteon = true; // as the settings file left it
        notes->restoreStrip();
        QVERIFY(f->w.notebox.visible);
        QCOMPARE(core::oneLine(QStringLiteral("first\r\nsecond\n\nthird")), QStringLiteral("first second third"));
    }
};

QTEST_GUILESS_MAIN(TestNotes)
#include "test_notes.moc"
