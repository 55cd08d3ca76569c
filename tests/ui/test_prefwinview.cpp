// The preferences window's widgets are wired to its form: the save refusal, the list editor, the settings.
#include "shell/ui/prefwinview.h"
#include "support/fakes.h"
#include "support/memorystore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTreeWidget>
#include <QtTest>

using namespace shell;

namespace
{

const QString kOps = QStringLiteral("/config/VK8 Opps List");

struct Hooks : PrefwinHooks
{
    bool open = true;
    int saves = 0;
    bool timesheetOpen() const override { return open; }
    void saveprefs() override { ++saves; }
};

template <typename W> W* child(QWidget& view, const char* name)
{
    W* widget = view.findChild<W*>(QString::fromLatin1(name));
    if (!widget)
        qFatal("no widget %s", name);
    return widget;
}

} // namespace

class TestPrefwinView : public QObject
{
    Q_OBJECT

    core::AppPrefs prefs;
    testing::ScriptedDialogs dialogs;
    testing::FakeDesktop desktop;
    testing::MemoryFileStore files;
    Hooks hooks;

    prefwin::Services services() { return {prefs, dialogs, desktop, files, hooks, kOps, QStringLiteral("/desk")}; }
    static bool shown(QWidget& view)
    {
        view.show();
        return QTest::qWaitForWindowExposed(&view);
    }

private slots:
    void init()
    {
        prefs = {};
        dialogs = {};
        files.files.clear();
        hooks = {};
    }
    void cleanup() { QVERIFY2(dialogs.errors.isEmpty(), qPrintable(dialogs.errors.join(u'\n'))); }

    void emptyListKeepsTheWindowUntilAnOperationIsAdded()
    {
        prefwin form(services());
        form.TabPanel1 = 1; // the first run opens on the operations tab
        ui::PrefwinView view(form, {QStringLiteral("Mono")});
        QVERIFY(shown(view));
        QCOMPARE(child<QTabWidget>(view, "TabPanel1")->currentIndex(), 1);
        QVERIFY(!(view.windowFlags() & Qt::WindowCloseButtonHint));

        child<QTabWidget>(view, "TabPanel1")->setCurrentIndex(0);
        QTest::mouseClick(child<QPushButton>(view, "Saveprefa"), Qt::LeftButton);
        QCOMPARE(dialogs.messages, QStringList{prefwin::kPrefAddOperation});
        QVERIFY(view.isVisible());
        QCOMPARE(child<QTabWidget>(view, "TabPanel1")->currentIndex(), 1);
        QTest::keyClick(&view, Qt::Key_Escape);
        view.close();
        QVERIFY(view.isVisible());
        QCOMPARE(hooks.saves, 0);

        auto* newopp = child<QLineEdit>(view, "newopp");
        auto* addnew = child<QPushButton>(view, "addnew");
        QVERIFY(!addnew->isEnabled());
        newopp->setFocus();
        QTest::keyClicks(newopp, QStringLiteral("Pre-press"));
        QCOMPARE(newopp->text(), QStringLiteral("Prepress"));
        QVERIFY(addnew->isEnabled() && addnew->isDefault());
        QTest::keyClick(newopp, Qt::Key_Return); // the default button adds
        auto* list = child<QTreeWidget>(view, "opplistnow");
        QCOMPARE(list->topLevelItemCount(), 1);
        QCOMPARE(list->topLevelItem(0)->text(0) + newopp->text(), QStringLiteral("Prepress")); // the field empties

        list->setCurrentItem(list->topLevelItem(0));
        QCOMPARE(newopp->text(), QStringLiteral("Prepress"));
        QCOMPARE(addnew->text(), prefwin::kPrefAddChange);
        QVERIFY(child<QPushButton>(view, "killthis")->isEnabled());

        QTest::mouseClick(child<QPushButton>(view, "Saveprefa"), Qt::LeftButton);
        QVERIFY(!view.isVisible() && view.result() == QDialog::Accepted);
        QCOMPARE(hooks.saves, 1);
        QCOMPARE(storage::decodeOperations(files.files.value(kOps)).size(), 1);
    }

    void settingsControlsReachTheForm()
    {
        files.files[kOps] = storage::encodeOperations({{QStringLiteral("Design"), QString()}});
        prefs.statustrans = 80;
        prefwin form(services());
        ui::PrefwinView view(form, {QStringLiteral("Mono")});
        QVERIFY(shown(view));
        QCOMPARE(child<QTabWidget>(view, "TabPanel1")->currentIndex(), 0);

        auto* restart = child<QPushButton>(view, "restartWeb");
        QVERIFY(!restart->isEnabled());
        QTest::mouseClick(child<QCheckBox>(view, "netconnect"), Qt::LeftButton);
        QVERIFY(prefs.netlook && restart->isEnabled());

        auto* slider = child<QSlider>(view, "Slider1");
        QCOMPARE(slider->value(), 80);
        slider->setValue(45);
        QCOMPARE(QString::number(prefs.statustrans) + "|" + child<QLabel>(view, "Transvalue")->text(), "45|45%");

        auto* size = child<QComboBox>(view, "Typesize");
        size->setFocus();
        QTest::keyClick(size, Qt::Key_Down);
        QCOMPARE(prefs.fontsize, 11);

        child<QTabWidget>(view, "TabPanel1")->setCurrentIndex(2);
        // A check box takes clicks on its box and caption only, not on the empty rest of its row.
        QTest::mouseClick(child<QCheckBox>(view, "xblnkrow"), Qt::LeftButton, {}, QPoint(8, 10));
        QVERIFY(prefs.expbr);
        QCOMPARE(form.TabPanel1, 2);
    }
};

QTEST_MAIN(TestPrefwinView)
#include "test_prefwinview.moc"
