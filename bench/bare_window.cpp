// The floor of the start-up benchmark: the least a Qt Widgets program does to put a window on the
// screen. bench/startup.py starts it in turn with the program, so both are timed on the same machine
// in the same minute.

#include <QApplication>
#include <QWidget>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QWidget window;
    window.setWindowTitle(QStringLiteral("Bare window"));
    window.resize(300, 200);
    window.show();
    return QApplication::exec();
}
