// The job dialog and the rows it saves; delete, reset and note of rows; the lists' headings, keys and menu.
#include "core/app.h"
#include "jobs/jobops.h"
#include "jobs/listbehaviour.h"
#include "jobs/notes.h"
#include "jobs/rowops.h"
#include "storage/operations_file.h"
#include "support/listfixture.h"

#include <QtTest>

using namespace core;
using jobs::Aresure;
using jobs::specialw;
using testing::ListFixture;

namespace
{
// Records the other windows the dialog asked for; "Add New Client" adds `added`.
struct Hooks : jobs::SpecialwHooks
{
    void editOperations() override { calls << QStringLiteral("editOperations"); }
    void editPresetJobs() override { calls << QStringLiteral("editPresetJobs"); }
    void joblistupdate() override { calls << QStringLiteral("joblistupdate"); }
    void syncaddressbook2() override { *access = grantAccess; }
    QString showAddressadd() override
    {
        calls << QStringLiteral("showAddressadd");
        return added;
    }
    bool* access = nullptr;
    bool grantAccess = false;
    QString added;
    QStringList calls;
};

// The main window of ListFixture with the job operations around it.
struct Rig : ListFixture
{
    storage::PresetJobList joblst;
    Hooks jobHooks;
    jobs::FileSources sources{files, prefs, QStringLiteral("/prefs"), joblst};
    jobs::JobServices services{w, hooks, prefs, clock, desktop, dialogs, timers, sources, jobHooks, view};
    jobs::JobOps ops{services};
    jobs::RowOps rowOps{w, {clock, desktop, dialogs, hooks, view}};
    jobs::Notes notes{w, prefs, {desktop, dialogs, view}};
    QStringList commands; // what the lists handed on, the window's own enable procedure deciding
    jobs::ListBehaviour lists{w,
                              {clock, desktop, view},
                              {[this](Item i) { return w.allows(i); }, [this](Item i) { commands << itemName(i); }}};
    bool open = false;

    Rig()
    {
        jobHooks.access = &w.contactsAccess;
        prefs.usrname = QStringLiteral("Ann");
    }
    // Three rows with notes; the middle one, dated last week, is selected.
    void threeRows()
    {
        for (auto [job, days, minutes] : {std::tuple{"A1", 0, 60}, {"B2", -7, 120}, {"C3", 0, 180}})
            add(day(days), job, QStringLiteral("Acme"), minutes, QStringLiteral("a note"));
        w.setListIndex(1);
    }
    std::unique_ptr<specialw> dialog()
    {
        auto d = std::make_unique<specialw>(services, open);
        d->Event_Open();
        return d;
    }
    // Plays the user in the next job dialog.
    void play(std::function<void(specialw&)> user)
    {
        dialogs.expectModal(specialw::kFormName,
                            [user](platform::ModalForm& form) { user(static_cast<specialw&>(form)); });
    }
    static void fillValid(specialw& d)
    {
        std::tie(d.enterjob, d.enterclient, d.popup.caption) = std::tuple("j100", "Website", "Design");
    }
    // OK, and the closing timer fired as the event loop would.
    static void saveAndClose(specialw& d)
    {
        d.okjob2.visible ? d.okjob2_Action() : d.okjob_Action();
        fire(d.specialtimer());
    }
    static void fire(platform::Timer& t) { static_cast<testing::FakeTimer&>(t).fire(); }
    // The user answers the delete window with a scope (0 to 3), or cancels (-1).
    void answerDelete(int scope)
    {
        dialogs.expectModal(QStringLiteral("aresure"), [scope](platform::ModalForm& form) {
            auto& a = static_cast<Aresure&>(form);
            static constexpr bool Aresure::*radios[] = {&Aresure::delseljob, &Aresure::delalljobs,
                                                        &Aresure::delalljobdate, &Aresure::delallmonth};
            if (scope >= 0)
                a.choose(radios[scope]);
            scope >= 0 ? a.Okay_Action() : a.Cancel_Action();
        });
        rowOps.deletejb();
    }
    void answerReset(bool ok, const QString& title, const QString& question)
    {
        dialogs.expectModal(QStringLiteral("aresure"), [=](platform::ModalForm& form) {
            auto& a = static_cast<Aresure&>(form);
            QCOMPARE((QStringList{a.GroupBox1 ? "radios" : "", a.title, a.question}),
                     (QStringList{"", title, question}));
            ok ? a.Okay_Action() : a.Cancel_Action();
        });
        rowOps._zerorow_Action();
    }
    // The context menu of ListBox1, an entry that is off marked so.
    QStringList menu()
    {
        QStringList texts;
        for (const jobs::MenuItem& item : lists.ConstructContextualMenu(1))
            texts << item.text + (item.enabled ? "" : " (off)");
        return texts;
    }
};
} // namespace

class TestJobs : public QObject
{
    Q_OBJECT

    std::unique_ptr<Rig> rig;

    void done()
    {
        QVERIFY2(rig->dialogs.errors.isEmpty(), qPrintable(rig->dialogs.errors.join(u'\n')));
        QVERIFY(rig->dialogs.scriptDone());
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void init() { rig = std::make_unique<Rig>(); }
    void cleanup() { done(); }

    // Each check stops the save with its message and a beep, in this order; OK is back, the window stays.
    void eachCheckStopsTheSave_data()
    {
        QTest::addColumn<QStringList>("fields"); // job, project, operation, user, date, client
        QTest::addColumn<QString>("message");
        const QString op = QStringLiteral("Design"), none = specialw::kNoChoice, every = specialw::kEnterDatainEveryBox;
        // clang-format off
        QTest::newRow("no job number") << QStringList{"", "P", op, "Ann", "11/22/26", "Acme"} << every;
        QTest::newRow("no project")    << QStringList{"J1", "", op, "Ann", "11/22/26", "Acme"} << every;
        QTest::newRow("no operation")  << QStringList{"J1", "P", none, "Ann", "11/22/26", "Acme"} << specialw::kChooseOperation;
        QTest::newRow("no user")       << QStringList{"J1", "P", op, "", "11/22/26", "Acme"} << every;
        QTest::newRow("bad date")      << QStringList{"J1", "P", op, "Ann", "13/45/26", "Acme"} << specialw::kEnterValidDate + "11/22/26";
        QTest::newRow("other client")  << QStringList{"J1", "P", op, "Ann", "11/22/26", "Zeta"}
                                       << specialw::kSingleClientList + "Acme\n\n" + specialw::kSameClientName;
        QTest::newRow("first check wins") << QStringList{"", "P", none, "Ann", "x", "Zeta"} << every;
        // clang-format on
    }
    void eachCheckStopsTheSave()
    {
        QFETCH(QStringList, fields);
        QFETCH(QString, message);
        rig->w.LB2ClientName = QStringLiteral("Acme");
        rig->w.ListBox2Ctl.visible = true;
        rig->play([&](specialw& d) {
            std::tie(d.enterjob, d.enterclient, d.popup.caption, d.nmepopup, d.dateField, d.popupclnt.caption) =
                std::tie(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]);
            d.okjob_Action();
            QCOMPARE(rig->dialogs.messages, QStringList{message});
            QVERIFY(rig->desktop.beeps == 1 && d.okjob.enabled && d.specialtimer().mode() == platform::Timer::Off);
            d.canceljob_Action();
        });
        rig->ops.donewjob();
        QCOMPARE(rig->w.ListBox1.ListCount(), 0);
    }
    // Time fields take only digits and editing keys, minutes under 60; date arrows step a day (00 is 2000).
    void keysMinutesAndDates()
    {
        auto d = rig->dialog();
        for (const QChar key : QStringLiteral("7\r\b\x03-\u0663")) {
            const int swallowed = key == u'-' || key == u'\u0663' ? 2 : 0, beeps = rig->desktop.beeps;
            QCOMPARE(d->sphrs_KeyDown(key) + d->spmin_KeyDown(key), swallowed);
            QCOMPARE(rig->desktop.beeps - beeps, swallowed);
        }
        for (const QString minutes : {"59", "60"}) {
            d->spmin = minutes;
            d->spmin_TextChange();
        }
        QCOMPARE(d->spmin + rig->dialogs.messages.join(u'|'), specialw::kMinsLess);
        for (auto [start, up, shown] :
             {std::tuple{"soon", true, "soonDay"}, {"1/1/27", false, "12/31/26Thu"}, {"2/28/00", true, "2/29/00Tue"}}) {
            d->dateField = QString::fromLatin1(start);
            up ? d->dateArrows_Up() : d->dateArrows_Down();
            QCOMPARE(d->dateField + d->dateDay, QString::fromLatin1(shown));
        }
    }
    // "&" is doubled in the menus and single in the row; a preset's project is all after the first colon.
    void ampersandsSurviveTheMenus()
    {
        rig->files.files["/prefs/" + storage::kOperationsFileName] =
            storage::encodeOperations({{"R&D", "Research & development"}, {"Design", ""}});
        rig->writeClients({QStringLiteral("Smith & Sons")});
        rig->joblst = {storage::PresetJob{"J&1", "A & B : C", {}, {}, {}, {}, {}}};
        rig->play([](specialw& d) {
            QCOMPARE(d.popup.rows[3].text + "|" + d.popup.rows[4].text, "R&&D : Research && development|Design");
            d.popup_Action(3);
            d.popupclnt_Action(3);
            d.choosejob_Action(4);
            QCOMPARE(d.enterjob + "|" + d.enterclient + "|" + d.popupclnt.caption, "J&1|A & B : C|Smith && Sons");
            Rig::saveAndClose(d);
        });
        rig->ops.donewjob();
        const JobRow& saved = rig->w.ListBox1.row(0);
        QCOMPARE(QStringList(saved.cells.begin() + 1, saved.cells.begin() + 7),
                 (QStringList{"J&1", "A & B : C", "00", "00", "R&D", "Smith & Sons"}));
    }
    // The group's operations win; a typed job goes on top of the presets; a new client needs the contacts.
    void menus()
    {
        rig->files.files["/prefs/" + storage::kOperationsFileName] = storage::encodeOperations({{"Local", ""}});
        rig->prefs.rmteops = QStringLiteral("/shared/ops");
        rig->files.files[rig->prefs.rmteops] = storage::encodeOperations({{"Group", ""}});
        auto d = rig->dialog();
        QCOMPARE(QString::number(d->popup.rows.size()) + d->popup.rows[3].text, "4Group");
        rig->files.files.remove(rig->prefs.rmteops);
        d->popup_Action(0);
        QCOMPARE(d->popup.rows.size(), 3); // refresh, edit, separator
        d->popup_Action(1);
        std::tie(d->enterjob, d->enterclient) = std::tuple("new7", "Roof");
        d->choosejob_Action(2);
        QCOMPARE(QString::number(rig->joblst.size()) + rig->joblst[0].job + rig->joblst[0].project +
                     rig->joblst[0].budget,
                 "1NEW7Roof00");
        d->choosejob_Action(0);
        QCOMPARE(d->choosejob.rows.last().text, QStringLiteral("NEW7 : Roof"));
        rig->w.ListBox2Ctl.visible = true;
        d->choosejob_Action(1);
        QCOMPARE(rig->dialogs.messages, QStringList{App::kAppRunWarning + "\n\n" + specialw::kNSUNotifiAlertMsg});
        d->popupclnt_Action(3); // no client list: the placeholder chooses nothing
        QCOMPARE(d->popupclnt.caption, specialw::kNoChoice);
        rig->writeClients({QStringLiteral("Acme"), QStringLiteral("Zed & Co")});
        for (auto [access, added, caption] : {std::tuple{false, "", specialw::kAddNewClient},
                                              {true, "", specialw::kNoChoice},
                                              {true, "zed & co", "Zed && Co"}}) {
            d = rig->dialog();
            std::tie(rig->jobHooks.grantAccess, rig->jobHooks.added) = std::tuple(access, added);
            d->popupclnt_Action(1);
            QCOMPARE(d->popupclnt.caption, caption);
        }
        QCOMPARE(rig->jobHooks.calls.join(u' '), "editOperations joblistupdate showAddressadd showAddressadd");
    }
    // A new job goes on top, dated today and selected; with no time it is never started.
    void newJobGoesOnTop_data()
    {
        QTest::addColumn<QStringList>("typed");  // hours, minutes
        QTest::addColumn<QStringList>("result"); // time, run mark, run button
        QTest::newRow("00:00") << QStringList{"00", "00"} << QStringList{"00:00", kRunNever, Tr::MWStartButtonFs};
        QTest::newRow("00:30") << QStringList{"00", "30"} << QStringList{"00:30", kRunStopped, Tr::MWStartButtonSt};
        QTest::newRow("5, no minutes") << QStringList{"5", ""}
                                       << QStringList{"05:00", kRunStopped, Tr::MWStartButtonSt};
    }
    void newJobGoesOnTop()
    {
        QFETCH(QStringList, typed);
        QFETCH(QStringList, result);
        rig->threeRows();
        rig->play([&](specialw& d) {
            QCOMPARE(d.dateField + d.dateDay, QStringLiteral("11/22/26") + specialw::kDaySunday);
            Rig::fillValid(d);
            std::tie(d.sphrs, d.spmin) = std::tie(typed[0], typed[1]);
            d.okjob_Action();
            QVERIFY(!d.okjob.enabled && !d.closed); // the window waits for its closing timer
            Rig::fire(d.specialtimer());
            QVERIFY(d.closed);
        });
        rig->ops.donewjob();
        const JobRow& r = rig->w.ListBox1.row(0);
        QCOMPARE(std::pair(rig->w.ListBox1.ListCount(), rig->w.ListBox1.ListIndex), std::pair(4, 0));
        QCOMPARE((QStringList{r.cell(CellHours) + u':' + r.cell(CellMinutes), r.run, rig->w.runButton.caption}),
                 result);
        QCOMPARE(r.cell(CellJob) + r.cell(CellClient) + r.user, "J100" + specialw::kNoChoice + "Ann");
        QVERIFY(rig->w.boxchange && !rig->w.running && !rig->ops.openFlag);
    }
    // Saved with Ctrl down (OK says so), a new job makes its first start and an edited row of today goes on. A
    // row saved while a job runs goes on top without the selection: the next tick charges the running job.
    void ctrlSaveStartsTiming()
    {
        for (bool edit : {false, true}) {
            init();
            rig->threeRows();
            rig->w.setListIndex(0);
            rig->clock.set(2026, 11, 22, 14, 5);
            rig->play([&](specialw& d) {
                rig->desktop.ctrl = true;
                Rig::fire(d.captionTimer());
                QCOMPARE(d.okjob.caption + d.okjob2.caption, Tr::MWStartButtonSt + Tr::MWStartButtonSt);
                if (!edit)
                    Rig::fillValid(d);
                d.spmin = edit ? QStringLiteral("45") : QStringLiteral("00");
                Rig::saveAndClose(d);
            });
            edit ? rig->ops.doeditjob() : rig->ops.donewjob();
            const Timesheet& list = rig->w.ListBox1;
            QVERIFY(list.ListCount() == (edit ? 3 : 4) && rig->w.running && list.row(0).run == kRunRunning);
            QCOMPARE(list.row(0).cell(CellMinutes) + list.starthrs + list.startmin, edit ? "451405" : "001405");
            QCOMPARE(rig->w.Timer3().mode(), platform::Timer::Multiple); // the minute count runs
            rig->desktop.ctrl = false;
            auto d = rig->dialog();
            Rig::fillValid(*d);
            d->dateField = rig->day();
            d->okjob_Action();
            QVERIFY(list.ListIndex == 1 && list.selected().run == kRunRunning);
            rig->clock.advanceMinutes(3);
            Rig::fire(rig->w.Timer3());
            QCOMPARE(std::pair(list.row(1).minutes(), list.row(0).minutes()), std::pair(edit ? 108LL : 3LL, 0LL));
            done();
        }
    }
    // An edit writes in place, keeping date and run mark; a duplicate is of today, with no time nor note.
    void editAndDuplicate()
    {
        rig->threeRows();
        const JobRow before = rig->w.ListBox1.row(1);
        rig->play([](specialw& d) {
            QVERIFY(d.wintitle == specialw::kWintitleE && d.okjob2.visible && !d.okjob.visible);
            QCOMPARE(d.nmepopup + d.NotesArea, QStringLiteral("Default Usera note"));
            std::tie(d.sphrs, d.NotesArea) = std::tuple("0", "changed");
            Rig::saveAndClose(d);
        });
        rig->ops.doeditjob();
        const JobRow after = rig->w.ListBox1.row(1);
        QCOMPARE(after.run + after.cell(CellDate) + after.cell(CellHours) + after.note,
                 before.run + before.cell(CellDate) + "00changed");
        rig->play([](specialw& d) { d.canceljob_Action(); });
        const Timesheet untouched = rig->w.ListBox1;
        rig->ops.clone();
        QCOMPARE(rig->w.ListBox1, untouched);
        rig->play([](specialw& d) {
            QCOMPARE(d.wintitle + d.enterjob + d.sphrs + d.spmin, specialw::kWintitleD + "B20000");
            Rig::saveAndClose(d);
        });
        rig->ops.clone();
        const JobRow& copy = rig->w.ListBox1.row(0);
        QCOMPARE(copy.cell(CellDate) + copy.cell(CellProject) + copy.user, "11/22/26P-B2Default User");
        QVERIFY(copy.run == kRunNever && copy.note.isEmpty());
        QCOMPARE(rig->w.ListBox1.row(2), after);
    }
    // Each scope takes its rows (a month only of its year); the selection keeps its place, or goes up from the end.
    void deleteScopes_data()
    {
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<int>("selected");
        QTest::addColumn<int>("scope"); // one row, job number, date, month; -1 cancels
        QTest::addColumn<QStringList>("remaining");
        QTest::addColumn<int>("selectedAfter");
        const QStringList mixed{"A|11/22/26", "B|11/22/26", "a|11/21/26", "A|11/21/26",
                                "C|10/5/26",  "A|11/3/25",  "D|soon",     "E|11/1/26"};
        const QStringList four{"A|11/22/26", "B|11/22/26", "C|11/22/26", "D|11/22/26"};
        // clang-format off
        QTest::newRow("one row")                     << mixed << 1 << 0 << QStringList{"A", "a", "A", "C", "A", "D", "E"} << 1;
        QTest::newRow("job no., any case")           << mixed << 0 << 1 << QStringList{"B", "C", "D", "E"} << 0;
        QTest::newRow("job no. from below: last row") << mixed << 3 << 1 << QStringList{"B", "C", "D", "E"} << 2;
        QTest::newRow("date")                        << mixed << 1 << 2 << QStringList{"a", "A", "C", "A", "D", "E"} << 1;
        QTest::newRow("month keeps other year, bad dates") << mixed << 0 << 3 << QStringList{"C", "A", "D"} << 0;
        QTest::newRow("month of a bad date: nothing") << mixed << 6 << 3 << QStringList{"A", "B", "a", "A", "C", "A", "D", "E"} << 6;
        QTest::newRow("last of four ends on row 0")  << four << 3 << 0 << QStringList{"A", "B", "C"} << 0;
        QTest::newRow("row before last: row above")  << four << 2 << 0 << QStringList{"A", "B", "D"} << 1;
        QTest::newRow("only row")            << QStringList{"A|11/22/26"} << 0 << 0 << QStringList{} << -1;
        QTest::newRow("all rows of one job") << QStringList{"A|11/22/26", "a|11/21/26"} << 1 << 1 << QStringList{} << -1;
        QTest::newRow("cancelled")           << four << 1 << -1 << QStringList{"A", "B", "C", "D"} << 1;
        // clang-format on
    }
    void deleteScopes()
    {
        QFETCH(QStringList, rows);
        QFETCH(int, selected);
        QFETCH(int, scope);
        QFETCH(QStringList, remaining);
        QFETCH(int, selectedAfter);
        for (const QString& r : rows)
            rig->add(r.section(u'|', 1), r.section(u'|', 0, 0), QStringLiteral("Acme"), 30);
        rig->w.setListIndex(selected);
        rig->answerDelete(scope);
        QCOMPARE(ListFixture::jobs(rig->w.ListBox1), remaining);
        QCOMPARE(std::pair(rig->w.ListBox1.ListIndex, rig->w.runButton.enabled),
                 std::pair(selectedAfter, selectedAfter >= 0));
        QVERIFY(rig->w.boxchange == (scope >= 0) && rig->desktop.beeps == 1);
        const QString& totals = rig->w.runtotal; // said again after a delete
        const int n = int(remaining.size());
        QVERIFY(scope < 0 || (totals.startsWith(Tr::MWListTotals + hhmm(30 * n) + Tr::MWListToday) &&
                              totals.endsWith(Tr::MWListTotalsEntries + fmt00(n))));
    }
    // A reset changes only date, time, run mark and note, of the selected row, or with Alt of every row.
    void reset()
    {
        for (auto [note, ok, alt] : {std::tuple{"", true, false},
                                     {"call back", true, false},
                                     {"call back", false, false},
                                     {"call back", true, true}}) {
            init();
            rig->add(QStringLiteral("11/2/26"), QStringLiteral("K1"), QStringLiteral("Acme"), 95, note);
            rig->add(QStringLiteral("11/3/26"), QStringLiteral("K2"), QStringLiteral("Acme"), 125, note).budget =
                kBudgetOver;
            rig->w.setListIndex(1);
            rig->desktop.alt = alt;
            std::vector<JobRow> expected = rig->w.ListBox1.rows;
            rig->answerReset(ok, alt ? Tr::MWResetAllRows : Tr::MWResetRow,
                             alt     ? Tr::MWResetAllRowQuestion
                             : *note ? Tr::MWResetRowQuestionNote
                                     : Tr::MWResetRowQuestion);
            for (size_t r = alt ? 0 : 1; ok && r < 2; ++r) {
                expected[r].cells[CellDate] = rig->day();
                expected[r].cells[CellHours] = expected[r].cells[CellMinutes] = QStringLiteral("00");
                expected[r].run = kRunNever;
                expected[r].note.clear();
            }
            QVERIFY(rig->w.ListBox1.rows == expected && rig->w.boxchange == ok && rig->w.ListBox1.ListIndex == !alt);
            QCOMPARE(rig->w.runButton.caption, ok ? Tr::MWStartButtonFs : Tr::MWStartButtonSt);
            QVERIFY(!ok || rig->w.runtotal.startsWith(alt ? "List Totals - Time: 00:00" : "List Totals - Time: 01:35"));
            done();
        }
    }
    // A note goes to the selected row and the strip; in a client's view the copy carries it, selections kept.
    void noteGoesToTheSelectedRow()
    {
        rig->writeClients({QStringLiteral("Acme")});
        for (auto [job, client] : {std::pair{"J1", "Bolt"}, {"J2", "Acme"}, {"J3", "acme"}})
            rig->add(rig->day(), job, client, 10, QStringLiteral("old ") + job);
        rig->pickClient(QStringLiteral("Acme"));
        rig->view.setListBox2Index(1);
        const QString note = QStringLiteral("Café \U0001F600\nok");
        rig->dialogs.expectModal(QStringLiteral("notewin"), [&](platform::ModalForm& form) {
            auto& n = static_cast<jobs::Notewin&>(form);
            QVERIFY(n.EditField1 == "old J3" && rig->w.noteWinOpen && n.EditField1_TextChange(note));
            n.saveit_Action();
        });
        rig->notes._notey_Action();
        const Mainwndo& w = rig->w;
        QCOMPARE(
            (QStringList{w.ListBox1.row(2).note, w.ListBox2.row(1).note, w.notebox.caption, w.ListBox1.row(1).note}),
            (QStringList{note, note, note, "old J2"}));
        QVERIFY(!w.noteWinOpen && w.boxchange && w.ListBox1.ListIndex == 2 && w.ListBox2.ListIndex == 1);
    }
    // A note too long for the file, from elsewhere, may only shrink, and is saved cut between characters.
    void longNoteCanOnlyShrink()
    {
        const QString longNote = QString(185, u'a') + QStringLiteral("\U0001F600\U0001F600"); // 193 bytes
        jobs::Notewin n(rig->desktop);
        n.Event_Open(longNote, {});
        QVERIFY(!n.EditField1_TextChange(longNote + u'b') && n.EditField1_TextChange(longNote.mid(1)));
        QCOMPARE(n.savedText(), QString(184, u'a'));
    }
    // The date heading sorts by day, the selection with its row, and flips; the document is not changed.
    void dateHeadingSortsByDayAndFlips()
    {
        for (auto [date, job] : {std::pair{"11/2/26", "B"}, {"1/15/27", "D"}, {"soon", "D2"}, {"9/30/26", "A"}})
            rig->add(date, job);
        rig->add(QStringLiteral("11/20/26"), QStringLiteral("C")).setCell(CellLink, QStringLiteral("77"));
        rig->w.setListIndex(0);
        QCOMPARE(rig->lists.SortColumn(1, CellDate).column, -1); // no heading stays pressed
        QCOMPARE(ListFixture::jobs(rig->w.ListBox1), (QStringList{"A", "B", "C", "D", "D2"}));
        QCOMPARE(rig->w.ListBox1.Cell(0, CellSortKey), QString::number(totalSeconds(QDate(2026, 9, 30))));
        QCOMPARE(rig->w.ListBox1.Cell(4, CellSortKey), rig->w.ListBox1.Cell(3, CellSortKey));
        QCOMPARE(std::pair(rig->w.ListBox1.ListIndex, rig->w.sortdirection), std::pair(1, -1));
        QCOMPARE(rig->w.ListBox1.Cell(2, CellLink) + rig->w.ListBox1.Cell(0, CellLink), "773"); // the rest numbered
        rig->lists.SortColumn(1, CellDate);
        QCOMPARE(ListFixture::jobs(rig->w.ListBox1), (QStringList{"D", "D2", "C", "B", "A"}));
        QVERIFY(rig->w.sortdirection == 1 && !rig->w.boxchange);
    }
    // A text heading of the client view sorts the whole list, then the view from it, its links still right.
    void headingOfTheClientViewSortsTheWholeList()
    {
        rig->writeClients({QStringLiteral("Acme")});
        for (auto [job, client] : {std::pair{"Z", "Acme"}, {"M", "Other"}, {"A", "Acme"}})
            rig->add(rig->day(), job, client);
        rig->pickClient(QStringLiteral("Acme"));
        rig->view.setListBox2Index(1); // "A"
        rig->lists.SortColumn(2, CellJob);
        QCOMPARE(ListFixture::jobs(rig->w.ListBox1) + ListFixture::jobs(rig->w.ListBox2),
                 (QStringList{"A", "M", "Z", "A", "Z"}));
        QVERIFY(rig->w.boxchange);
        for (const JobRow& copy : rig->w.ListBox2.rows)
            QCOMPARE(rig->w.ListBox1.Cell(Val(copy.cell(CellLink)), CellJob), copy.cell(CellJob));
        QCOMPARE(rig->w.ListBox2.selected().cell(CellJob) + rig->w.ListBox1.selected().cell(CellJob), "AA");
    }
    // Keys and context menu reach the commands, only as the menus allow, and the menu shows job and day totals.
    void keysAndContextMenu()
    {
        QVERIFY(rig->menu() == QStringList{Tr::EMAddJob} && !rig->lists.ListBox_KeyDown(1, u'\b'));
        rig->lists.ContextualMenuAction(Tr::EMAddJob);
        for (auto [days, job, minutes] : {std::tuple{0, "J1", 70}, {-1, "j1", 65}, {0, "J2", 5}})
            rig->add(rig->day(days), job, QString(), minutes);
        rig->w.setListIndex(0);
        QString taken;
        for (const QChar key : QStringLiteral("\r\x03\b\x7fx"))
            taken += rig->lists.ListBox_KeyDown(1, key) ? u'1' : u'0';
        QCOMPARE(taken, QStringLiteral("11110"));
        QCOMPARE(rig->menu(), (QStringList{Tr::EMDupeJob, Tr::EMJobDetails, Tr::EMJobNotes, "",
                                           "Job Total - 02:15 (off)", "Day Total - 01:15 (off)", "", Tr::EMDeleteJob}));
        for (const QString& text : {Tr::EMDupeJob, Tr::EMJobDetails, Tr::EMJobNotes, Tr::EMDeleteJob})
            rig->lists.ContextualMenuAction(text);
        QCOMPARE(rig->commands.join(u' '),
                 "nujobmenu2 edjobmenu edjobmenu clearjb2 clearjb2 duplicate edjobmenu notey clearjb2");
        rig->w.runButton_Action(); // timing: the row commands are off here as in the menus
        for (const QString& text : rig->menu())
            QVERIFY2(text.isEmpty() || text.endsWith(" (off)"), qPrintable(text));
    }
};

QTEST_GUILESS_MAIN(TestJobs)
#include "test_jobs.moc"
