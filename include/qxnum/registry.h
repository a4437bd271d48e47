/// \file
/// The class registry and component look-ups of a form.
///
/// Field classes register a factory under their file-facing class name ("TNumFld", "TNumGrid")
/// from a static registrar in their own .cpp, so that a form reading a stream can create an
/// instance of a class it knows only by name:
///
///     static const qxnum::TClassRegistrar Reg("TNumEdit", [](QObject* Owner) -> QObject* {
///         return new TNumEdit(qobject_cast<QWidget*>(Owner));
///     });
///
/// The registry itself is a function-local static, so registrars may run in any order during
/// library start-up. Class names are looked up case-insensitively; registering a name again
/// replaces the earlier factory. All functions are meant for the user-interface thread (the
/// registry is guarded, so start-up registration from other threads is harmless).
#pragma once

#include <qxnum/numfld_intf.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QObject;

namespace qxnum {

/// Creates a component owned by Owner (its QObject parent; nullptr: no owner).
using TComponentFactory = std::function<QObject*(QObject* Owner)>;

QXNUM_CORE_EXPORT void RegisterClass(const QString& ClassName, TComponentFactory Factory);
/// Removes a registration; false when the name was not registered.
QXNUM_CORE_EXPORT bool UnRegisterClass(const QString& ClassName);
/// The factory of a registered class; empty when the name is unknown.
QXNUM_CORE_EXPORT TComponentFactory GetClass(const QString& ClassName);
/// Names as registered, sorted.
QXNUM_CORE_EXPORT QStringList RegisteredClasses();
/// A new instance of a registered class; nullptr when the name is unknown.
QXNUM_CORE_EXPORT QObject* CreateComponent(const QString& ClassName, QObject* Owner);

struct QXNUM_CORE_EXPORT TClassRegistrar {
    TClassRegistrar(const char* ClassName, TComponentFactory Factory);
};

/// Frames are containers whose components belong to the frame, not to the form around it. A
/// QObject is a frame when its class (by Qt meta-object name) inherits one of the registered
/// frame classes; "qxnum::TFieldFrame" is registered from the start (it must carry Q_OBJECT).
QXNUM_CORE_EXPORT void RegisterFrameClass(const char* QtClassName);
QXNUM_CORE_EXPORT bool IsFieldFrame(const QObject* Object);

/// The components of a form or frame: its QObject descendants in depth-first child order, not
/// descending into frames (a frame is listed, its content is not) nor into fields (objects that
/// support INumFld: their children are their own sub-objects). Deterministic; this is the order
/// fields are written to streams.
QXNUM_CORE_EXPORT QList<QObject*> ComponentsOf(QObject* Owner);
/// The component of Owner whose objectName is Name: the first exact match in component order,
/// else the first match ignoring case; nullptr for an empty name or when there is none.
QXNUM_CORE_EXPORT QObject* FindComponent(QObject* Owner, const QString& Name);

/// The class name of a component as files hold it and as it is registered: the Qt class name
/// without its namespace ("qxnum::TNumFld" gives "TNumFld"); empty for nullptr.
QXNUM_CORE_EXPORT QString FileClassName(const QObject* Object);

/// The field contract of a component, nullptr when it has none.
QXNUM_CORE_EXPORT INumFld* Supports(QObject* Object);
QXNUM_CORE_EXPORT bool Supports(QObject* Object, INumFld*& Field);

} // namespace qxnum
