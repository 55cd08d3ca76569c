// Start-up, the window's screen and the quit, with the settings and files answered by a fake.
#include "core/app.h"
#include "support/fakes.h"

#include <QtTest>

using namespace core;

namespace
{

class FakeAppHooks : public AppHooks, public MainwndoHooks
{
public:
    void readPrefs(AppPrefs& prefs) override
    {
        if (stored)
            prefs = *stored;
    }
    void saveprefs(const AppPrefs& prefs) override { saved << prefs; }
    bool fileExists(const QString& path) const override { return existing.contains(path); }
    void sesame() override { ++sesames; }
    bool operationsFileExists() const override { return haveOperations; }
    void firstRun() override { ++firstRuns; }
    void exit() override { ++exits; }

    std::optional<AppPrefs> stored;
    QList<AppPrefs> saved;
    QStringList existing;
    bool haveOperations = true;
    int sesames = 0, firstRuns = 0, exits = 0;
};

} // namespace

class TestApp : public QObject
{
    Q_OBJECT

    testing::FakeClock clock;
    testing::FakeDesktop desktop;
    testing::ScriptedDialogs dialogs;
    testing::FakeTimers timers;
    platform::EventGate gate;
    FakeAppHooks hooks;
    std::unique_ptr<App> app;

private slots:
    void init()
    {
        desktop = testing::FakeDesktop();
        dialogs = testing::ScriptedDialogs();
        hooks = FakeAppHooks();
        app = std::make_unique<App>(Mainwndo::Services{clock, desktop, dialogs, timers, hooks, gate}, hooks);
    }

    void cleanup() { QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(QLatin1Char('\n')))); }

    void firstStartUsesDefaultsAndWelcomes()
    {
        hooks.haveOperations = false;
        desktop.mouse = QPoint(321, 123);
        app->Event_Open();
        QCOMPARE(app->prefs.chosefont, QStringLiteral("Verdana"));
        QCOMPARE(app->prefs.winwidth, 501);
        QVERIFY(app->prefs.warningsign && app->prefs.statusquo && !app->prefs.autopen);
        QCOMPARE(app->prefs.positionx, 321);
        QCOMPARE(hooks.firstRuns, 1);
        QVERIFY(dialogs.messages.isEmpty()); // no settings file is no error
        QCOMPARE(app->mywindowcount, 0);
    }

    void recentFileOpensOrIsReportedMissing_data()
    {
        QTest::addColumn<bool>("exists");
        QTest::addColumn<bool>("autopen");
        QTest::addColumn<int>("sesames");
        QTest::addColumn<int>("messages");
        QTest::newRow("opens") << true << true << 1 << 0;
        QTest::newRow("moved away") << false << true << 0 << 1;
        QTest::newRow("auto-open off") << true << false << 0 << 0;
    }

    void recentFileOpensOrIsReportedMissing()
    {
        QFETCH(bool, exists);
        QFETCH(bool, autopen);
        AppPrefs stored;
        stored.lastdoc = QStringLiteral("/home/ann/Week 47.vlk");
        stored.autopen = autopen;
        hooks.stored = stored;
        if (exists)
            hooks.existing << stored.lastdoc;
        app->Event_Open();
        QTEST(hooks.sesames, "sesames");
        QTEST(int(dialogs.messages.size()), "messages");
        if (!dialogs.messages.isEmpty()) {
            QCOMPARE(dialogs.messages.first(),
                     QStringLiteral("Veltrick - Error [-2]\n\nWARNING! - Unable to open the recent timesheet file - "
                                    "Perhaps the file has been moved or deleted!\nThe last known path to the file "
                                    "was: /home/ann/Week 47.vlk"));
            QCOMPARE(app->prefs.lastdoc, stored.lastdoc); // the path stays in the settings
            QVERIFY(app->thisdoc.isEmpty());
        }
    }

    // A window position is on a screen when it lies inside its available area, edges included.
    void restoreWindowSize_data()
    {
        QTest::addColumn<QPoint>("topLeft");
        QTest::addColumn<int>("screen");
        QTest::newRow("main screen") << QPoint(10, 50) << 0;
        QTest::newRow("right edge of main") << QPoint(1920, 1080) << 0;
        QTest::newRow("second screen") << QPoint(2000, 100) << 1;
        QTest::newRow("display gone") << QPoint(-3000, 100) << -1;
    }

    void restoreWindowSize()
    {
        QFETCH(QPoint, topLeft);
        QFETCH(int, screen);
        desktop.screenList = {QRect(0, 0, 1920, 1080), QRect(1921, 0, 1280, 1024)};
        Mainwndo& w = app->mainwndo();
        dialogs.messages.clear();
        app->windScreen = 7;
        app->RestoreWindowSize(w, topLeft.x(), topLeft.y(), 600, 420);
        if (screen < 0) {
            QCOMPARE(dialogs.messages, QStringList{QStringLiteral(
                                           "Previous display is not available.\n\nFor your convenience, the Timesheet "
                                           "window has been moved to your main display.")});
            QCOMPARE(app->windScreen, 7);
            QVERIFY(!w.geometry.isValid());
        } else {
            QVERIFY(dialogs.messages.isEmpty());
            QCOMPARE(app->windScreen, screen);
            QCOMPARE(w.geometry, QRect(topLeft, QSize(600, 420)));
        }
    }

    // Quit saves the settings; a Cancel at the save question keeps the window and the program.
    void quitWithUnsavedChanges()
    {
        app->Event_Open();
        Mainwndo& w = app->mainwndo();
        w.geometry = QRect(40, 60, 700, 500);
        w.markChanged();
        dialogs.expectAnswer(platform::Answer::Cancel);
        QVERIFY(!app->_FileQuit_Action());
        QCOMPARE(hooks.saved.size(), 1);
        QCOMPARE(hooks.exits, 0);
        QVERIFY(app->existingMainwndo());

        dialogs.expectAnswer(platform::Answer::Alternate);
        QVERIFY(app->_FileQuit_Action());
        QCOMPARE(hooks.exits, 1);
        QCOMPARE(app->mywindowcount, 0);
        QCOMPARE(hooks.saved.last().winwidth, 700); // the last save has the window's place
        QCOMPARE(hooks.saved.last().wintop, 60);
    }

    void errorsAreReportedNotFatal()
    {
        app->Event_UnhandledException(-3, QStringLiteral("bad_alloc"));
        QCOMPARE(desktop.beeps, 1);
        QVERIFY(
            dialogs.messages.first().startsWith(QStringLiteral("Veltrick - Error [-3]\n\nOoops... I can't do that!")));
        // Without an address from the build the message gives the version; with one, the address.
        QVERIFY(core::App::unhandledText(2, QString()).endsWith(QStringLiteral("please report it. (Veltrick v.8.0)")));
        QVERIFY(core::App::unhandledText(2, QStringLiteral("bugs@example.org"))
                    .endsWith(QStringLiteral("please report it by sending an email to: bugs@example.org")));
    }
};

QTEST_GUILESS_MAIN(TestApp)
#include "test_app.moc"
