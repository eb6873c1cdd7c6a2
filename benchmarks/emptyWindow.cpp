#include <QApplication>
#include <QMainWindow>

/// What every Qt program with a window needs to come up: the other half of each pair of processStart.py.
int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QMainWindow window;
    window.show();
    return QApplication::exec();
}
