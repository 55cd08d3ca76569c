// The preferences window's form: settings written at once, the operations list and its file, the save.
#include "shell/prefwin.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <QtTest>

using namespace shell;
using storage::Operation;
using storage::OperationList;

namespace
{

const QString kOps = QStringLiteral("/config/Veltrick/VK8 Opps List");
const QString kDesk = QStringLiteral("/home/u/Desktop");

// Records what the window asks of the rest of the program.
struct Hooks : PrefwinHooks
{
    bool open = false;
    int screen = 0;
    QStringList calls;
    double opacity = -1;

    bool timesheetOpen() const override { return open; }
    int windScreen() const override { return screen; }
    void netLinkStop() override { calls << QStringLiteral("stop"); }
    void netLinkListen() override { calls << QStringLiteral("listen"); }
    void showStatusWindow() override { calls << QStringLiteral("show"); }
    void hideStatusWindow() override { calls << QStringLiteral("hide"); }
    void setStatusOpacity(double value) override { opacity = value; }
    void applyListFont(const QString& font, int size) override { calls << font + QString::number(size); }
    void refreshOppsList() override { calls << QStringLiteral("refresh"); }
    void saveprefs() override { calls << QStringLiteral("saveprefs"); }
    void applyStripes() override { calls << QStringLiteral("stripes"); }
};

OperationList someOperations(int count)
{
    OperationList list;
    for (int i = 0; i < count; ++i)
        list.append({QStringLiteral("Op%1").arg(i), QString()});
    return list;
}

} // namespace

class TestPrefwin : public QObject
{
    Q_OBJECT

    core::AppPrefs prefs;
    testing::ScriptedDialogs dialogs;
    testing::FakeDesktop desktop;
    testing::MemoryFileStore files;
    Hooks hooks;

    prefwin::Services services() { return {prefs, dialogs, desktop, files, hooks, kOps, kDesk}; }
    OperationList stored() const { return storage::decodeOperations(files.files.value(kOps)); }
    void add(prefwin& form, const QString& name, const QString& description = QString())
    {
        form.newopp_TextChange(name);
        form.newdesc_TextChange(description);
        form.addnew_Action();
    }

private slots:
    void init()
    {
        prefs = {};
        dialogs = {};
        desktop = {};
        hooks = {};
        files = {};
    }
    void cleanup() { QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(u'\n'))); }

    void firstRunLeavesOnlyWithAnOperation()
    {
        prefwin form(services());
        form.TabPanel1 = 1;
        dialogs.expectModal(QStringLiteral("prefwin"), [&](platform::ModalForm& shown) {
            auto& w = static_cast<prefwin&>(shown);
            w.Event_Open({});
            w.TabPanel1_Change(0);
            w.Saveprefa_Action();
            QVERIFY(!w.closed());
            QCOMPARE(w.TabPanel1, 1);
            QCOMPARE(desktop.beeps, 1);
            QCOMPARE(dialogs.messages, QStringList{prefwin::kPrefAddOperation});
            QVERIFY(!hooks.calls.contains(QStringLiteral("saveprefs")));
            add(w, QStringLiteral("Design"));
            w.Saveprefa_Action();
        });
        dialogs.showModal(form);
        QVERIFY(form.closed());
        QCOMPARE(stored(), (OperationList{{QStringLiteral("Design"), QString()}}));
        QCOMPARE(hooks.calls.count(QStringLiteral("saveprefs")), 1);
    }

    void removingTheLastOperationLeavesCountZero()
    {
        files.files[kOps] = storage::encodeOperations({{QStringLiteral("Design"), QStringLiteral("Drawing")}});
        prefwin form(services());
        form.Event_Open({});
        form.opplistnow_Change(0);
        QCOMPARE(form.addnew.Caption, prefwin::kPrefAddChange);
        QCOMPARE(form.newdesc.Text, QStringLiteral("Drawing"));
        form.killthis_Action();
        QCOMPARE(files.files.value(kOps), QByteArray(1, '\0'));
        QCOMPARE(form.addnew.Caption, prefwin::kPSAddBtn);
        QVERIFY(!form.killthis.Enabled);
        form.Saveprefa_Action();
        QVERIFY(!form.closed());
        QCOMPARE(dialogs.messages, QStringList{prefwin::kPrefAddOperation});
    }

    void typedOperationsAreStoredAsTyped_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("description");
        QTest::addColumn<Operation>("expected");
        // clang-format off
        QTest::newRow("ampersand") << "R&D" << "Lab & bench" << Operation{"R&D", "Lab & bench"};
        QTest::newRow("non-ASCII") << "Café ☕" << "Größe 東京" << Operation{"Café ☕", "Größe 東京"};
        QTest::newRow("pasted dash") << "Pre-press" << "" << Operation{"Prepress", ""};
        QTest::newRow("long name") << QString(30, u'n') << QString(100, u'd') << Operation{QString(20, u'n'), QString(90, u'd')};
        // clang-format on
    }
    void typedOperationsAreStoredAsTyped()
    {
        QFETCH(QString, name);
        QFETCH(QString, description);
        QFETCH(Operation, expected);
        prefwin form(services());
        form.Event_Open({});
        add(form, name, description);
        QCOMPARE(stored(), OperationList{expected});
        QCOMPARE(form.opplistnow, OperationList{expected});
        QVERIFY(form.newopp.Text.isEmpty() && form.newdesc.Text.isEmpty());
    }

    void the128thOperationIsRefused()
    {
        files.files[kOps] = storage::encodeOperations(someOperations(storage::kMaxOperations));
        prefwin form(services());
        form.Event_Open({});
        const int writes = files.writes;
        add(form, QStringLiteral("One too many"));
        QCOMPARE(form.opplistnow.size(), storage::kMaxOperations);
        QCOMPARE(dialogs.messages, QStringList{prefwin::kPrefListFull});
        QCOMPARE(desktop.beeps, 1);
        QCOMPARE(files.writes, writes);
        QCOMPARE(form.newopp.Text, QStringLiteral("One too many")); // kept for after a removal
        form.opplistnow_Change(126);                                // a full list can still be edited
        form.newopp_TextChange(QStringLiteral("Last"));
        form.addnew_Action();
        QCOMPARE(stored().size(), storage::kMaxOperations); // overwritten, not added
        QCOMPARE(stored().last().name, QStringLiteral("Last"));
        QCOMPARE(stored().at(125).name, QStringLiteral("Op125"));
        QCOMPARE(form.opplistnowIndex, -1);
        QCOMPARE(hooks.calls, QStringList{QStringLiteral("refresh")});
    }

    void openingShowsTheSettings()
    {
        // clang-format off
        prefs.rmteops = QStringLiteral("/shared/ops"); prefs.waittime = 7; prefs.fontsize = 14;
        prefs.chosefont = prefwin::kSystemFont; prefs.exportFormat = QStringLiteral("txt"); prefs.xprtEncoding = 9;
        prefs.netlook = true; prefs.statustrans = 55; hooks.screen = 1;
        // clang-format on
        desktop.screenList = {QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};
        desktop.probe.canTell = false; // a desktop that does not tell when the user is away
        prefwin form(services());
        // A family from two foundries is listed once, without the foundry's tag.
        form.Event_Open({QStringLiteral("Mono"), QString(), QStringLiteral("Sans [Adobe]"),
                         QStringLiteral("Sans [URW]"), QStringLiteral("Sans")});
        QVERIFY(prefs.rmteops.isEmpty()); // opening ends the use of a group list
        QCOMPARE(form.Typesize, 3);
        QCOMPARE(form.lstfont, (QStringList{"System Default", "", "Mono", "Sans"}));
        form.lstfont_Change(3); // the chosen font moves to the top
        QCOMPARE(form.lstfont.first(), QStringLiteral("Sans"));
        QCOMPARE(prefs.chosefont, QStringLiteral("Sans"));
        QVERIFY(form.prefRadioText && !form.prefRadioExcel);
        QCOMPARE(form.formatMenu, 0);
        QVERIFY(form.netconnect.Value && form.restartWeb.Enabled);
        QCOMPARE(form.Left, 1920 + 640 - prefwin::Width / 2);
        QCOMPARE(form.Top, 512 - prefwin::Height / 2);
        QVERIFY(!form.statusshow.Enabled && !form.Slider1.Enabled); // no timesheet, no strip
        QCOMPARE(form.noactivNote, prefwin::kPrefNoActivityUnavailable);

        hooks.open = true;
        hooks.screen = 4; // a screen that is gone: the main one
        desktop.probe.canTell = true;
        prefwin again(services());
        again.Event_Open({});
        QVERIFY(again.noactivNote.isEmpty());
        desktop.probe.input = true; // input before a new setting does not count towards it
        again.noactivpop_Change(1);
        QVERIFY(prefs.waittime == 5 && !desktop.probe.input);
        QCOMPARE(again.Left, 960 - prefwin::Width / 2);
        QVERIFY(again.statusshow.Enabled && again.statusshow.Value && again.Slider1.Enabled);
        QCOMPARE(again.Slider1.Value, 55);
        QCOMPARE(again.Transvalue, QStringLiteral("55%"));
    }

    void statusStripFollowsTheControls()
    {
        hooks.open = true;
        prefs.statustrans = 70;
        prefwin form(services());
        form.Event_Open({});
        form.Slider1_ValueChanged(40);
        QCOMPARE(hooks.opacity, 0.4);
        QCOMPARE(form.Transvalue, QStringLiteral("40%"));
        form.statusshow_Action(false);
        QVERIFY(!form.Slider1.Enabled);
        form.Slider1_ValueChanged(90); // a disabled slider changes nothing
        QCOMPARE(prefs.statustrans, 40);
        form.statusshow_Action(true);
        QCOMPARE(hooks.calls, (QStringList{"hide", "show"}));
        QCOMPARE(form.Slider1.Value, 40);

        // The colour well stores the picked colour, within 0 to 255, and the lists take it at once.
        form.stripes_Action(300, 128, -4);
        QCOMPARE(QList<int>({prefs.red, prefs.green, prefs.blue}), QList<int>({255, 128, 0}));
        QCOMPARE(hooks.calls.last(), QStringLiteral("stripes"));
    }

    void saveStoresTheUserNameAndFont_data()
    {
        QTest::addColumn<bool>("timesheetOpen");
        QTest::addColumn<QStringList>("calls");
        QTest::newRow("timesheet open") << true << QStringList{"refresh", "Verdana10", "saveprefs"};
        QTest::newRow("no timesheet") << false << QStringList{"refresh", "saveprefs"};
    }
    void saveStoresTheUserNameAndFont()
    {
        QFETCH(bool, timesheetOpen);
        QFETCH(QStringList, calls);
        hooks.open = timesheetOpen;
        files.files[kOps] = storage::encodeOperations(someOperations(1));
        prefwin form(services());
        form.Event_Open({});
        QCOMPARE(form.EditField1, QStringLiteral("Default User"));
        form.EditField1_TextChange(QStringLiteral("Zoë 東京 Ω"));
        QCOMPARE(prefs.usrname, QStringLiteral("Default User")); // read at the save, not before
        form.Saveprefa_Action();
        QVERIFY(form.closed());
        QCOMPARE(prefs.usrname, QStringLiteral("Zoë  Ω")); // MacRoman holds Ω but no CJK
        QCOMPARE(hooks.calls, calls);
    }

    void exportCopyAndFailedWrites()
    {
        files.files[kOps] = storage::encodeOperations({{"Design", "Draw\tand plan"}, {"R&D", ""}});
        prefwin form(services());
        form.Event_Open({});
        form.exportlist_Action();
        QCOMPARE(files.files.value(kDesk + "/Veltrick Operations.txt"), QByteArray("Design\tDraw and plan\nR&D\t\n"));
        QCOMPARE(dialogs.messages, QStringList{prefwin::kPrefCopyMessage});
        files.failWrites = true;
        form.exportlist_Action();
        QVERIFY(dialogs.messages.last().startsWith(prefwin::kPrefCopyFailed));
        // A list that cannot be written keeps the window open.
        form.Saveprefa_Action();
        QVERIFY(!form.closed());
        QCOMPARE(dialogs.messages.size(), 3);
        QVERIFY(dialogs.messages.last().startsWith(prefwin::kPrefOpsWriteError));
        QVERIFY(!hooks.calls.contains(QStringLiteral("saveprefs")));
    }

    void groupList_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::addColumn<QString>("status");
        QTest::newRow("found") << true << prefwin::kPrefGStatus;
        QTest::newRow("missing") << false << prefwin::kPrefGStatusError;
    }
    void groupList()
    {
        QFETCH(bool, exists);
        QFETCH(QString, status);
        const QString group = QStringLiteral("/shared/Team Opps");
        const OperationList groupOps{{QStringLiteral("Audit"), QStringLiteral("Team")}};
        if (exists)
            files.files[group] = storage::encodeOperations(groupOps);
        files.files[kOps] = storage::encodeOperations(someOperations(2));
        prefwin form(services());
        form.Event_Open({});
        dialogs.expectFile(QString()); // cancelled: nothing changes
        form.Canvas1_Action(1);
        QCOMPARE(form.Canvas1, 0);
        dialogs.expectFile(group);
        form.Canvas1_Action(1);
        QCOMPARE(prefs.rmteops, group);
        QCOMPARE(form.StaticText1.Text, status);
        QCOMPARE(form.opplistnow, exists ? groupOps : OperationList{});
        QVERIFY(!form.newopp.Enabled && !form.StaticText11.Visible);
        add(form, QStringLiteral("Sneaked in")); // the shared list is not edited here
        form.Saveprefa_Action();
        QCOMPARE(form.closed(), exists);
        QCOMPARE(stored(), someOperations(2)); // the user's own list is untouched
        QCOMPARE(prefs.rmteops, group);

        form.Canvas1_Action(0);
        QVERIFY(prefs.rmteops.isEmpty());
        QCOMPARE(form.opplistnow, someOperations(2));
        QCOMPARE(form.StaticText1.Text, prefwin::kPrefNOTxt);
    }
};

QTEST_GUILESS_MAIN(TestPrefwin)
#include "test_prefwin.moc"
