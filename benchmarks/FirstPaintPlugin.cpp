#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QWidget>

#include <unistd.h>

namespace vrk {
namespace {

/// Ends the process behind the first paint of any window. The processor time of the whole start is then the
/// process's own, and the program under measurement need not know of it.
class FirstPaint final : public QObject {
  private:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint && object->isWidgetType() &&
            static_cast<QWidget*>(object)->isWindow()) {
            QCoreApplication::instance()->removeEventFilter(this);
            QMetaObject::invokeMethod(
                QCoreApplication::instance(), [] { _exit(0); }, Qt::QueuedConnection);
        }
        return false;
    }
};

} // namespace
} // namespace vrk

/// Qt loads it into any of its programs: QT_QPA_GENERIC_PLUGINS=firstpaint.
class FirstPaintPlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "FirstPaintPlugin.json")

  public:
    QObject* create(const QString& /*key*/, const QString& /*specification*/) override {
        auto* watch = new vrk::FirstPaint;
        QCoreApplication::instance()->installEventFilter(watch);
        return watch;
    }
};

#include "FirstPaintPlugin.moc"
