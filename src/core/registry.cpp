#include <qxnum/registry.h>

#include <QHash>
#include <QObject>

#include <cstring>
#include <mutex>

namespace qxnum {

namespace {

struct TRegistry {
    std::mutex Lock;
    // Keyed by the case-folded name; the entry keeps the name as registered.
    QHash<QString, std::pair<QString, TComponentFactory>> Classes;
    QList<QByteArray> FrameClasses{QByteArrayLiteral("qxnum::TFieldFrame")};
};

TRegistry& Registry() {
    static TRegistry R;
    return R;
}

} // namespace

void RegisterClass(const QString& ClassName, TComponentFactory Factory) {
    TRegistry& R = Registry();
    const std::lock_guard<std::mutex> Guard(R.Lock);
    R.Classes.insert(ClassName.toCaseFolded(), {ClassName, std::move(Factory)});
}

bool UnRegisterClass(const QString& ClassName) {
    TRegistry& R = Registry();
    const std::lock_guard<std::mutex> Guard(R.Lock);
    return R.Classes.remove(ClassName.toCaseFolded()) > 0;
}

TComponentFactory GetClass(const QString& ClassName) {
    TRegistry& R = Registry();
    const std::lock_guard<std::mutex> Guard(R.Lock);
    const auto It = R.Classes.constFind(ClassName.toCaseFolded());
    return It == R.Classes.cend() ? TComponentFactory() : It->second;
}

QStringList RegisteredClasses() {
    TRegistry& R = Registry();
    QStringList Names;
    {
        const std::lock_guard<std::mutex> Guard(R.Lock);
        for (const auto& Entry : R.Classes)
            Names.append(Entry.first);
    }
    Names.sort(Qt::CaseInsensitive);
    return Names;
}

QObject* CreateComponent(const QString& ClassName, QObject* Owner) {
    // Called outside the lock: a constructor may well look up or register other classes.
    const TComponentFactory Factory = GetClass(ClassName);
    return Factory ? Factory(Owner) : nullptr;
}

TClassRegistrar::TClassRegistrar(const char* ClassName, TComponentFactory Factory) {
    RegisterClass(QString::fromUtf8(ClassName), std::move(Factory));
}

void RegisterFrameClass(const char* QtClassName) {
    TRegistry& R = Registry();
    const std::lock_guard<std::mutex> Guard(R.Lock);
    const QByteArray Name(QtClassName);
    if (!R.FrameClasses.contains(Name)) R.FrameClasses.append(Name);
}

static QList<QByteArray> FrameClassNames() {
    TRegistry& R = Registry();
    const std::lock_guard<std::mutex> Guard(R.Lock);
    return R.FrameClasses;
}

static bool InheritsAny(const QObject* Object, const QList<QByteArray>& Names) {
    for (const QByteArray& Name : Names)
        if (Object->inherits(Name.constData())) return true;
    return false;
}

bool IsFieldFrame(const QObject* Object) {
    return Object && InheritsAny(Object, FrameClassNames());
}

QList<QObject*> ComponentsOf(QObject* Owner) {
    QList<QObject*> List;
    if (!Owner) return List;
    // One look at the registry per walk, not one per object.
    const QList<QByteArray> Frames = FrameClassNames();
    // Explicit stack, children pushed in reverse so they come off in order.
    QList<QObject*> Stack;
    const QObjectList& Top = Owner->children();
    for (auto It = Top.crbegin(); It != Top.crend(); ++It)
        Stack.append(*It);
    while (!Stack.isEmpty()) {
        QObject* O = Stack.takeLast();
        List.append(O);
        if (InheritsAny(O, Frames) || Supports(O)) continue;
        const QObjectList& Kids = O->children();
        for (auto It = Kids.crbegin(); It != Kids.crend(); ++It)
            Stack.append(*It);
    }
    return List;
}

QObject* FindComponent(QObject* Owner, const QString& Name) {
    if (Name.isEmpty()) return nullptr;
    const QList<QObject*> List = ComponentsOf(Owner);
    for (QObject* O : List)
        if (O->objectName() == Name) return O;
    for (QObject* O : List)
        if (O->objectName().compare(Name, Qt::CaseInsensitive) == 0) return O;
    return nullptr;
}

QString FileClassName(const QObject* Object) {
    if (!Object) return {};
    const char* Name = Object->metaObject()->className();
    const char* Colons = std::strrchr(Name, ':');
    return QString::fromLatin1(Colons ? Colons + 1 : Name);
}

INumFld* Supports(QObject* Object) {
    return dynamic_cast<INumFld*>(Object);
}

bool Supports(QObject* Object, INumFld*& Field) {
    Field = Supports(Object);
    return Field != nullptr;
}

} // namespace qxnum
