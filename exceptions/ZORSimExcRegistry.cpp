#include "ZORSimExcRegistry.h"
#include "ZORSimExceptions.h"

#include <cerrno>
#include <cstring>

namespace {

// Field values to and from the common form.
template <class T> struct ValueOf;
template <> struct ValueOf<int> {
    static int From(const ZORSimExcValue& v) { return static_cast<int>(v.integer); }
    static ZORSimExcValue To(int x) {
        ZORSimExcValue v;
        v.integer = x;
        return v;
    }
};
template <> struct ValueOf<long long> {
    static long long From(const ZORSimExcValue& v) { return v.integer; }
    static ZORSimExcValue To(long long x) {
        ZORSimExcValue v;
        v.integer = x;
        return v;
    }
};
template <> struct ValueOf<bool> {
    static bool From(const ZORSimExcValue& v) { return v.integer != 0; }
    static ZORSimExcValue To(bool x) {
        ZORSimExcValue v;
        v.integer = x ? 1 : 0;
        return v;
    }
};
template <> struct ValueOf<unsigned int> {
    static unsigned int From(const ZORSimExcValue& v) { return static_cast<unsigned int>(v.unsignedInteger); }
    static ZORSimExcValue To(unsigned int x) {
        ZORSimExcValue v;
        v.unsignedInteger = x;
        return v;
    }
};
template <> struct ValueOf<unsigned long long> {
    static unsigned long long From(const ZORSimExcValue& v) { return v.unsignedInteger; }
    static ZORSimExcValue To(unsigned long long x) {
        ZORSimExcValue v;
        v.unsignedInteger = x;
        return v;
    }
};
template <> struct ValueOf<float> {
    static float From(const ZORSimExcValue& v) { return static_cast<float>(v.real); }
    static ZORSimExcValue To(float x) {
        ZORSimExcValue v;
        v.real = x;
        return v;
    }
};
template <> struct ValueOf<double> {
    static double From(const ZORSimExcValue& v) { return v.real; }
    static ZORSimExcValue To(double x) {
        ZORSimExcValue v;
        v.real = x;
        return v;
    }
};
template <> struct ValueOf<const char*> {
    static const char* From(const ZORSimExcValue& v) { return v.isNull ? nullptr : v.text.c_str(); }
    static ZORSimExcValue To(const char* x) {
        ZORSimExcValue v;
        v.isNull = x == nullptr;
        v.text = x ? x : "";
        return v;
    }
};
template <int N> struct ValueOf<ZORSimUttExceptionString<N>> {
    static ZORSimUttExceptionString<N> From(const ZORSimExcValue& v) { return v.text.c_str(); }
    static ZORSimExcValue To(const ZORSimUttExceptionString<N>& x) {
        ZORSimExcValue v;
        v.text = x.AsString();
        return v;
    }
};
template <> struct ValueOf<ZORBasSystemError> {
    static ZORBasSystemError From(const ZORSimExcValue& v) {
        return ZORBasSystemError(static_cast<int>(v.integer));
    }
    static ZORSimExcValue To(const ZORBasSystemError& x) {
        ZORSimExcValue v;
        v.integer = x.Code();
        v.text = x.AsString();
        return v;
    }
};
template <> struct ValueOf<ZORSimUttSerParserPlace> {
    static ZORSimUttSerParserPlace From(const ZORSimExcValue& v) { return ZORSimUttSerParserPlace(v.parser); }
    static ZORSimExcValue To(const ZORSimUttSerParserPlace& x) {
        ZORSimExcValue v;
        v.text = x.AsString();
        return v;
    }
};
template <> struct ValueOf<ZORSimUttSerParserError> {
    static ZORSimUttSerParserError From(const ZORSimExcValue& v) { return ZORSimUttSerParserError(v.parser); }
    static ZORSimExcValue To(const ZORSimUttSerParserError& x) {
        ZORSimExcValue v;
        v.integer = x.Code();
        v.text = x.AsString();
        return v;
    }
};
template <> struct ValueOf<ZORSimUttSerSystemError> {
    // The description records errno as it stands when it is made.
    static ZORSimUttSerSystemError From(const ZORSimExcValue& v) {
        errno = static_cast<int>(v.integer);
        return ZORSimUttSerSystemError();
    }
    static ZORSimExcValue To(const ZORSimUttSerSystemError& x) {
        ZORSimExcValue v;
        v.integer = x.Code();
        v.text = x.AsString();
        return v;
    }
};

#define ZORSIM_REG_X_FIELD(i, f)                                                                             \
    {                                                                                                        \
        ZORSIM_PP_STR(ZORSIM_EXC_GETTER_NAME(f)), ZORSimExcField<ZORSIM_EXC_FTYPE f>::kind,                  \
            ZORSimExcField<ZORSIM_EXC_FTYPE f>::capacity, ZORSIM_PP_STR(ZORSIM_EXC_FTYPE f)                  \
    }
#define ZORSIM_REG_X_FROM(i, f) ValueOf<ZORSIM_EXC_FTYPE f>::From(values[i - 1])
#define ZORSIM_REG_X_GET(i, f)                                                                               \
    case i - 1:                                                                                              \
        return ValueOf<ZORSIM_EXC_FTYPE f>::To(object.ZORSIM_EXC_GETTER_NAME(f)());

// First pass: the field descriptions of each class (a sentinel keeps the
// arrays of field-less classes non-empty).
#define ZORSIM_EXC(Name, CodeValue, Base, BaseArgs, Format, ...)                                             \
    const ZORSimExcFieldInfo kFields_##Name[] = {ZORSIM_PP_LIST(ZORSIM_REG_X_FIELD, __VA_ARGS__) __VA_OPT__( \
        , ){nullptr, ZORSimExcFieldKind::Int32, 0, nullptr}};
#include "ZORSimExcCatalogue.inc"
#undef ZORSIM_EXC

#define ZORSIM_REG_BASE_COUNT(BaseArgs) ZORSIM_REG_BASE_COUNT_I(ZORSIM_PP_UNPAREN BaseArgs)
#define ZORSIM_REG_BASE_COUNT_I(...) ZORSIM_PP_NARGS(__VA_ARGS__)

// Second pass: one entry per class.
#define ZORSIM_EXC(Name, CodeValue, Base, BaseArgs, Format, ...)                                             \
    {#Name,                                                                                                  \
     CodeValue,                                                                                              \
     #Base,                                                                                                  \
     ZORSIM_EXC_BLOCK,                                                                                       \
     Format,                                                                                                 \
     ZORSIM_REG_BASE_COUNT(BaseArgs),                                                                        \
     {ZORSIM_PP_UNPAREN BaseArgs},                                                                           \
     ZORSIM_PP_NARGS(__VA_ARGS__),                                                                           \
     kFields_##Name,                                                                                         \
     [](const ZORSimExcValue* values) -> ZORBasException* {                                                  \
         (void)values;                                                                                       \
         return new Name(ZORSIM_PP_LIST(ZORSIM_REG_X_FROM, __VA_ARGS__));                                    \
     },                                                                                                      \
     [](const ZORBasException& instance, int index) -> ZORSimExcValue {                                      \
         const Name& object = dynamic_cast<const Name&>(instance);                                           \
         (void)object;                                                                                       \
         switch (index) { ZORSIM_PP_EACH(ZORSIM_REG_X_GET, __VA_ARGS__) }                                    \
         return ZORSimExcValue();                                                                            \
     },                                                                                                      \
     [](const ZORBasException& instance) { return dynamic_cast<const Name*>(&instance) != nullptr; },        \
     [](void (*raise)(void*), void* context) {                                                               \
         try {                                                                                               \
             raise(context);                                                                                 \
         } catch (const Name&) {                                                                             \
             return true;                                                                                    \
         } catch (...) {                                                                                     \
             return false;                                                                                   \
         }                                                                                                   \
         return false;                                                                                       \
     }},
const ZORSimExcClassInfo kClasses[] = {
#include "ZORSimExcCatalogue.inc"
};
#undef ZORSIM_EXC

constexpr int kClassCount = static_cast<int>(sizeof(kClasses) / sizeof(kClasses[0]));

} // namespace

int ZORSimExcRegistry::Count() {
    return kClassCount;
}

const ZORSimExcClassInfo& ZORSimExcRegistry::At(int index) {
    return kClasses[index];
}

const ZORSimExcClassInfo* ZORSimExcRegistry::FindByName(const char* name) {
    if (name == nullptr)
        return nullptr;
    for (const ZORSimExcClassInfo& info : kClasses)
        if (std::strcmp(info.name, name) == 0)
            return &info;
    return nullptr;
}

std::vector<const ZORSimExcClassInfo*> ZORSimExcRegistry::FindByCode(int code) {
    std::vector<const ZORSimExcClassInfo*> found;
    for (const ZORSimExcClassInfo& info : kClasses)
        if (info.code == code)
            found.push_back(&info);
    return found;
}

const char* ZORSimExcRegistry::KindName(ZORSimExcFieldKind kind) {
    switch (kind) {
    case ZORSimExcFieldKind::Int32:
        return "int32";
    case ZORSimExcFieldKind::UInt32:
        return "uint32";
    case ZORSimExcFieldKind::Int64:
        return "int64";
    case ZORSimExcFieldKind::UInt64:
        return "uint64";
    case ZORSimExcFieldKind::Bool:
        return "bool";
    case ZORSimExcFieldKind::Float:
        return "float";
    case ZORSimExcFieldKind::Double:
        return "double";
    case ZORSimExcFieldKind::String:
        return "string";
    case ZORSimExcFieldKind::SystemError:
        return "system error";
    case ZORSimExcFieldKind::TextPointer:
        return "text pointer";
    case ZORSimExcFieldKind::ParserPlace:
        return "parser place";
    case ZORSimExcFieldKind::ParserError:
        return "parser error";
    case ZORSimExcFieldKind::SerSystemError:
        return "runtime error";
    }
    return "unknown";
}
