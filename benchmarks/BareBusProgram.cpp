#include <QCoreApplication>
#include <QDBusConnection>

// The least that a program with QtCore and QtDBus can be: it has a name on the session bus, and
// waits.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!QDBusConnection::sessionBus().registerService(QStringLiteral("org.example.Bare")))
        return 1;
    return QCoreApplication::exec();
}
