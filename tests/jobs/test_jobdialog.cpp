// The job dialog as a form (checks, key filters, menus, date stepper), and the new, edited and duplicated
// rows it brings into the list, with the Ctrl save that starts timing.
#include "core/app.h"
#include "jobs/jobdialogrig.h"
#include "jobs/notes.h"
#include "storage/timesheet_file.h"

#include <QLocale>
#include <QtTest>

using jobs::specialw;
using testing::JobRig;

class TestSpecialw : public QObject
{
    Q_OBJECT

    std::unique_ptr<JobRig> rig;
    bool open = false;

    // Three rows; the middle one, dated last week, is selected.
    void openSheet()
    {
        const QDate today = rig->clock.now().date();
        rig->w.ListBox1.rows = {JobRig::row(today, "A1", "01", core::kRunStopped),
                                JobRig::row(today.addDays(-7), "B2", "02", core::kRunStopped),
                                JobRig::row(today, "C3", "03", core::kRunNever)};
        rig->w.setListIndex(1);
    }

private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    void init() { rig = std::make_unique<JobRig>(); }
    void cleanup()
    {
        QVERIFY2(rig->dialogs.errors.isEmpty(), qPrintable(rig->dialogs.errors.join(u'\n')));
        QVERIFY(rig->dialogs.scriptDone());
    }

    void eachCheckStopsTheSaveWithItsMessage_data()
    {
        QTest::addColumn<QStringList>("fields"); // job, project, operation, user, date, client
        QTest::addColumn<QString>("message");
        const QString op = QStringLiteral("Design"), none = specialw::kNoChoice;
        const QString every = specialw::kEnterDatainEveryBox;
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

    void eachCheckStopsTheSaveWithItsMessage()
    {
        QFETCH(QStringList, fields);
        QFETCH(QString, message);
        rig->w.LB2ClientName = QStringLiteral("Acme");
        rig->w.ListBox2Ctl.visible = true;
        rig->play([&](specialw& d) {
            d.enterjob = fields[0];
            d.enterclient = fields[1];
            d.popup.caption = fields[2];
            d.nmepopup = fields[3];
            d.dateField = fields[4];
            d.popupclnt.caption = fields[5];
            d.okjob_Action();
            QCOMPARE(rig->dialogs.messages, QStringList{message});
            QCOMPARE(rig->desktop.beeps, 1);
            QVERIFY(d.okjob.enabled); // back for another try, and the window stays
            QCOMPARE(d.specialtimer().mode(), platform::Timer::Off);
            d.canceljob_Action();
        });
        rig->ops.donewjob();
        QCOMPARE(rig->w.ListBox1.ListCount(), 0);
    }

    void timeFieldsPassOnlyDigitsAndEditingKeys_data()
    {
        QTest::addColumn<QChar>("key");
        QTest::addColumn<bool>("swallowed");
        // clang-format off
        QTest::newRow("digit") << QChar(u'7') << false;  QTest::newRow("return") << QChar(13) << false;
        QTest::newRow("backspace") << QChar(8) << false; QTest::newRow("enter") << QChar(3) << false;
        QTest::newRow("minus") << QChar(u'-') << true;   QTest::newRow("arabic-indic digit") << QChar(0x0663) << true;
        // clang-format on
    }

    void timeFieldsPassOnlyDigitsAndEditingKeys()
    {
        QFETCH(QChar, key);
        QFETCH(bool, swallowed);
        auto d = rig->makeDialog(open);
        QCOMPARE(d->sphrs_KeyDown(key), swallowed);
        QCOMPARE(d->spmin_KeyDown(key), swallowed);
        QCOMPARE(rig->desktop.beeps, swallowed ? 2 : 0);
    }

    void dateArrowsStepOneDayWithTheWeekday_data()
    {
        QTest::addColumn<QString>("start");
        QTest::addColumn<int>("step");
        QTest::addColumn<QString>("date");
        QTest::addColumn<QString>("day");
        // As 1900 there would be no 29 February; the century nearest today makes it 2000.
        // clang-format off
        QTest::newRow("up over new year")        << "12/31/26" << 1  << "1/1/27"   << specialw::kDayFriday;
        QTest::newRow("down over new year")      << "1/1/27"   << -1 << "12/31/26" << specialw::kDayThursday;
        QTest::newRow("two-digit year leap day") << "2/28/00"  << 1  << "2/29/00"  << specialw::kDayTuesday;
        QTest::newRow("unreadable date")         << "soon"     << 1  << "soon"     << specialw::kDay;
        // clang-format on
    }

    void dateArrowsStepOneDayWithTheWeekday()
    {
        QFETCH(QString, start);
        QFETCH(int, step);
        QFETCH(QString, date);
        QFETCH(QString, day);
        auto d = rig->makeDialog(open);
        d->dateField = start;
        step > 0 ? d->dateArrows_Up() : d->dateArrows_Down();
        QCOMPARE(d->dateField, date);
        QCOMPARE(d->dateDay, day);
    }

    void menusWithoutFilesKeepTheirFixedRows()
    {
        auto d = rig->makeDialog(open);
        QVERIFY(open);
        QCOMPARE(d->popup.rows.size(), 3); // refresh, edit, separator
        d->popupclnt_Action(3);
        QCOMPARE(d->popupclnt.caption, specialw::kNoChoice);
        d->popup_Action(1);
        QCOMPARE(rig->hooks.calls, QStringList{"editOperations"});
        d->canceljob_Action();
        QVERIFY(!open);
    }

    void ampersandsSurviveTheMenusBothWays()
    {
        rig->writeOperations({{"R&D", "Research & development"}, {"Design", ""}});
        rig->writeClients({"Smith & Sons"});
        storage::PresetJob preset;
        preset.job = QStringLiteral("J&1");
        preset.project = QStringLiteral("A & B : C");
        rig->joblst = {preset};
        rig->play([](specialw& d) {
            QCOMPARE(d.popup.rows[3].text, QStringLiteral("R&&D : Research && development"));
            QCOMPARE(d.popup.rows[4].text, QStringLiteral("Design")); // no description, no " : "
            d.popup_Action(3);
            d.popupclnt_Action(3);
            d.choosejob_Action(4);
            QCOMPARE(d.enterjob, QStringLiteral("J&1"));
            QCOMPARE(d.enterclient, QStringLiteral("A & B : C")); // all after the first colon
            JobRig::saveAndClose(d);
        });
        rig->ops.donewjob();
        const core::JobRow saved = rig->w.ListBox1.row(0);
        QCOMPARE(QStringList(saved.cells.begin() + 1, saved.cells.begin() + 7),
                 (QStringList{"J&1", "A & B : C", "00", "00", "R&D", "Smith & Sons"}));

        // Back in: an edit shows the row's single "&" and saves it unchanged.
        rig->play([](specialw& d) {
            QCOMPARE(d.popup.caption, QStringLiteral("R&D"));
            JobRig::saveAndClose(d);
        });
        rig->ops.doeditjob();
        QCOMPARE(rig->w.ListBox1.row(0), saved);
    }

    void groupOperationsFileWinsWhenSet()
    {
        rig->writeOperations({{"Local", ""}});
        rig->prefs.rmteops = QStringLiteral("/shared/ops");
        rig->files.files[rig->prefs.rmteops] = storage::encodeOperations({{"Group", ""}});
        auto d = rig->makeDialog(open);
        QCOMPARE(d->popup.rows.size(), 4);
        QCOMPARE(d->popup.rows[3].text, QStringLiteral("Group"));
        rig->files.files.remove(rig->prefs.rmteops); // the group file has gone: "Refresh List" empties
        d->popup_Action(0);
        QCOMPARE(d->popup.rows.size(), 3);
    }

    // A row saved while a job runs goes on top without taking the selection: the next tick still charges
    // the running job, not the new row.
    void newRowWhileTimingKeepsTheRunningRowSelected()
    {
        openSheet();
        rig->w.setListIndex(0);
        rig->w.runButton_Action();
        QVERIFY(rig->w.running);
        auto d = rig->makeDialog(open);
        JobRig::fillValid(*d);
        d->dateField = core::shortDate(rig->clock.now().date());
        d->okjob_Action();
        QCOMPARE(rig->w.ListBox1.ListCount(), 4);
        QCOMPARE(rig->w.ListBox1.ListIndex, 1);
        QCOMPARE(rig->w.ListBox1.selected().run, core::kRunRunning);
        rig->clock.advanceMinutes(3);
        JobRig::timer(rig->w.Timer3()).fire();
        QCOMPARE(rig->w.ListBox1.row(1).minutes() - 60, qint64(3));
        QCOMPARE(rig->w.ListBox1.row(0).minutes(), qint64(0));
    }

    void presetMenuAddsToTheListButNotInSingleView()
    {
        auto d = rig->makeDialog(open);
        d->enterjob = QStringLiteral("new7");
        d->enterclient = QStringLiteral("Roof");
        d->choosejob_Action(2);
        QCOMPARE(rig->joblst.size(), 1);
        QCOMPARE(rig->joblst[0].job + rig->joblst[0].project + rig->joblst[0].budget, QStringLiteral("NEW7Roof00"));
        d->choosejob_Action(0);
        QCOMPARE(d->choosejob.rows.last().text, QStringLiteral("NEW7 : Roof"));
        rig->w.ListBox2Ctl.visible = true;
        d->choosejob_Action(1);
        QCOMPARE(rig->dialogs.messages, QStringList{core::App::kAppRunWarning + "\n\n" + specialw::kNSUNotifiAlertMsg});
        QCOMPARE(rig->hooks.calls, QStringList{"joblistupdate"}); // and no preset window
    }

    // Adding a client from the dialog needs the contacts; the client added is then the one chosen.
    void addNewClientNeedsContactsAccess_data()
    {
        QTest::addColumn<bool>("access");
        QTest::addColumn<QString>("added");
        QTest::addColumn<QString>("caption");
        QTest::newRow("refused") << false << QString() << specialw::kAddNewClient;
        QTest::newRow("granted, sheet cancelled") << true << QString() << specialw::kNoChoice;
        QTest::newRow("granted, client added") << true << "Zed & Co"
                                               << "Zed && Co";
    }

    void addNewClientNeedsContactsAccess()
    {
        QFETCH(bool, access);
        QFETCH(QString, added);
        QFETCH(QString, caption);
        rig->hooks.grantAccess = access;
        rig->hooks.added = added;
        rig->writeClients({QStringLiteral("Acme")});
        auto d = rig->makeDialog(open);
        rig->hooks.onAdd = [&](const QString& name) {
            rig->writeClients({QStringLiteral("Acme"), name});
            d->rebuildClientMenu();
        };
        d->popupclnt_Action(1);
        QCOMPARE(d->popupclnt.caption, caption);
        QCOMPARE(rig->hooks.calls.contains("showAddressadd"), access);
    }

    // The dialog stops a note where the note window does, at what the file holds: nothing is cut on save.
    void noteLongerThanTheFileFieldIsRefused()
    {
        auto d = rig->makeDialog(open);
        const QString fits(storage::kMaxFieldUtf8 / 2, QChar(0x00E9)); // two bytes each
        QVERIFY(d->NotesArea_TextChange(fits));
        QVERIFY(!d->NotesArea_TextChange(fits + QLatin1Char('x')));
        QCOMPARE(d->NotesArea, fits);
        QCOMPARE(d->noteWarning, jobs::noteFullText());
        QVERIFY(d->noteWarning.contains(QString::number(storage::kMaxFieldUtf8)));
        core::Timesheet sheet;
        sheet.AddRow(core::JobRow{});
        sheet.row(0).note = d->NotesArea;
        int cut = 0;
        QCOMPARE(storage::decodeTimesheet(storage::encodeTimesheet(sheet, &cut)).sheet.row(0).note, fits);
        QCOMPARE(cut, 0);
    }

    void newJobGoesOnTopWithItsRunMark_data()
    {
        QTest::addColumn<QString>("hours");
        QTest::addColumn<QString>("minutes");
        QTest::addColumn<QString>("time");
        QTest::addColumn<QString>("run");
        QTest::addColumn<QString>("button");
        // clang-format off
        QTest::newRow("00:00")            << "00" << "00" << "00:00" << core::kRunNever   << Tr::MWStartButtonFs;
        QTest::newRow("00:30")            << "00" << "30" << "00:30" << core::kRunStopped << Tr::MWStartButtonSt;
        QTest::newRow("5, minutes empty") << "5"  << ""   << "05:00" << core::kRunStopped << Tr::MWStartButtonSt;
        // clang-format on
    }

    void newJobGoesOnTopWithItsRunMark()
    {
        QFETCH(QString, hours);
        QFETCH(QString, minutes);
        QFETCH(QString, time);
        QFETCH(QString, run);
        QFETCH(QString, button);
        openSheet();
        rig->play([&](specialw& d) {
            QCOMPARE(d.dateField + d.dateDay, QStringLiteral("11/22/26") + specialw::kDaySunday);
            JobRig::fillValid(d);
            d.sphrs = hours;
            d.spmin = minutes;
            d.okjob_Action();
            QVERIFY(!d.okjob.enabled && !d.closed); // the window waits for its closing timer
            JobRig::timer(d.specialtimer()).fire();
            QVERIFY(d.closed);
        });
        rig->ops.donewjob();

        const core::Timesheet& list = rig->w.ListBox1;
        QCOMPARE(list.ListCount(), 4);
        QCOMPARE(list.ListIndex, 0); // on top and selected, though row 1 was selected before
        const core::JobRow& r = list.row(0);
        // No client is no error.
        QCOMPARE(r.cell(core::CellHours) + ":" + r.cell(core::CellMinutes), time);
        QCOMPARE(r.cell(core::CellJob) + r.cell(core::CellClient) + r.user, "J100" + specialw::kNoChoice + "Ann");
        QCOMPARE(r.run, run);
        QCOMPARE(rig->w.runButton.caption, button);
        QVERIFY(rig->w.boxchange && !rig->w.running && !rig->ops.openFlag);
    }

    void ctrlSaveStartsTiming_data()
    {
        QTest::addColumn<bool>("edit");
        QTest::addColumn<QString>("minutes");
        QTest::newRow("new 00:00 job: first start") << false << "00";
        QTest::newRow("edited row of today: continue") << true << "45";
    }

    void ctrlSaveStartsTiming()
    {
        QFETCH(bool, edit);
        QFETCH(QString, minutes);
        openSheet();
        rig->w.setListIndex(0);
        rig->clock.set(2026, 11, 22, 14, 5);
        rig->play([&](specialw& d) {
            rig->desktop.ctrl = true;
            JobRig::timer(d.captionTimer()).fire();
            QCOMPARE(d.okjob.caption + d.okjob2.caption, Tr::MWStartButtonSt + Tr::MWStartButtonSt);
            if (!edit)
                JobRig::fillValid(d);
            d.spmin = minutes;
            JobRig::saveAndClose(d);
        });
        edit ? rig->ops.doeditjob() : rig->ops.donewjob();

        const core::Timesheet& list = rig->w.ListBox1;
        QCOMPARE(list.ListCount(), edit ? 3 : 4);
        QVERIFY(rig->w.running);
        QCOMPARE(list.row(0).run, core::kRunRunning);
        QCOMPARE(list.row(0).cell(core::CellMinutes), minutes);
        QCOMPARE(list.starthrs + list.startmin, QStringLiteral("1405"));
        QCOMPARE(rig->timers.made[1]->mode(), platform::Timer::Multiple); // the minute count runs
    }

    void editWritesInPlaceAndKeepsTheRunMark_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("run");
        QTest::newRow("stopped row set to 00:00") << 1 << core::kRunStopped;
        QTest::newRow("never-started row with time") << 2 << core::kRunNever;
    }

    void editWritesInPlaceAndKeepsTheRunMark()
    {
        QFETCH(int, row);
        QFETCH(QString, run);
        openSheet();
        rig->w.setListIndex(row);
        const core::JobRow before = rig->w.ListBox1.row(row);
        rig->play([&](specialw& d) {
            QCOMPARE(d.wintitle, specialw::kWintitleE);
            QVERIFY(d.okjob2.visible && !d.okjob.visible);
            QCOMPARE(d.nmepopup + d.NotesArea, QStringLiteral("Boba note")); // the row's user, not the settings' one
            d.sphrs = QStringLiteral("0");
            d.NotesArea = QStringLiteral("changed");
            JobRig::saveAndClose(d);
        });
        rig->ops.doeditjob();
        QCOMPARE(rig->w.ListBox1.ListCount(), 3);
        const core::JobRow& after = rig->w.ListBox1.row(row);
        QCOMPARE(after.run, run);
        QCOMPARE(after.cell(core::CellHours) + after.note, QStringLiteral("00changed"));
        QCOMPARE(after.cell(core::CellDate), before.cell(core::CellDate));
    }

    void cloneIsDatedTodayWithoutTimeOrNote()
    {
        openSheet();
        rig->play([](specialw& d) { d.canceljob_Action(); });
        const core::Timesheet untouched = rig->w.ListBox1;
        rig->ops.clone();
        QCOMPARE(rig->w.ListBox1, untouched);

        rig->play([](specialw& d) {
            QCOMPARE(d.wintitle, specialw::kWintitleD);
            QCOMPARE(d.enterjob + d.sphrs + d.spmin, QStringLiteral("B20000"));
            JobRig::saveAndClose(d);
        });
        rig->ops.clone();
        const core::JobRow& copy = rig->w.ListBox1.row(0);
        QCOMPARE(copy.cell(core::CellDate) + copy.cell(core::CellProject) + copy.user, "11/22/26Project B2Bob");
        QCOMPARE(copy.run, core::kRunNever);
        QVERIFY(copy.note.isEmpty());
        QCOMPARE(rig->w.ListBox1.row(2), untouched.row(1)); // the original stays as it was
    }

    void singleClientViewPresetsAndRebuilds()
    {
        openSheet();
        for (core::JobRow& r : rig->w.ListBox1.rows)
            r.setCell(core::CellClient, QStringLiteral("Smith & Sons"));
        rig->writeClients({QStringLiteral("Smith & Sons")});
        rig->view.clientlist2_ExpandRow();
        rig->view.setClientlist2Index(1);
        rig->view.setListBox2Index(2);
        rig->play([](specialw& d) {
            QCOMPARE(d.popupclnt.caption, QStringLiteral("Smith && Sons"));
            JobRig::fillValid(d);
            JobRig::saveAndClose(d);
        });
        rig->ops.donewjob();
        QCOMPARE(rig->w.ListBox1.Cell(0, core::CellClient), QStringLiteral("Smith & Sons"));
        QCOMPARE(rig->w.ListBox2.ListCount(), 4); // the new job shows at once
        // with the view's selection kept, and the whole list on the same row
        QCOMPARE(std::pair(rig->w.ListBox2.ListIndex, rig->w.ListBox1.ListIndex), std::pair(2, 2));
    }

    void editAndDuplicateNeedASelectedRow()
    {
        rig->ops._edjobmenu_Action(); // nothing selected: no window, or the cleanup fails
        rig->ops._duplicate_Action();
        openSheet();
        rig->play([](specialw& d) { d.canceljob_Action(); });
        rig->ops._edjobmenu_Action();
        QCOMPARE(rig->dialogs.modalsShown, QStringList{specialw::kFormName});
    }
};

QTEST_GUILESS_MAIN(TestSpecialw)
#include "test_jobdialog.moc"
