// The floors of the start-up benchmark: the least a Qt Widgets program does to put a window on the
// screen, and with "--start-window" the same with what the program's start window shows (a menu bar,
// two lines of text, two buttons) and nothing behind it. bench/startup.py starts them in turn with the
// program, so all are timed on the same machine in the same minute.

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QVBoxLayout>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Bare window"));
    if (QApplication::arguments().contains(QStringLiteral("--start-window"))) {
        for (const char* menu : {"&File", "&Edit", "&View", "&Control", "&Help"})
            window.menuBar()->addMenu(QString::fromLatin1(menu));
        auto* central = new QWidget(&window);
        auto* layout = new QVBoxLayout(central);
        layout->addWidget(new QLabel(QStringLiteral("<b>Bare</b> 8.0"), central));
        layout->addWidget(new QLabel(QStringLiteral("Make a new timesheet, or open one, to start timing your work.")));
        auto* buttons = new QHBoxLayout;
        buttons->addWidget(new QPushButton(QStringLiteral("New Timesheet..."), central));
        buttons->addWidget(new QPushButton(QStringLiteral("Open Timesheet..."), central));
        layout->addLayout(buttons);
        window.setCentralWidget(central);
    } else {
        window.resize(300, 200);
    }
    window.show();
    return QApplication::exec();
}
