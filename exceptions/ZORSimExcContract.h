// The exception contract, implemented once. Every catalogue class is
// generated from one table row by the macros below:
//
//   ZORSIM_EXC(Name, code, Base, (k...), "message format", (Field, Type)...)
//
// Name derives from Base and hands its values at positions k... to Base's
// constructor, in Base's own parameter order (usually (1, 2, ...): the
// shared leading values); it also keeps its own copy of every value, which its getters
// (Get<Field>) and its message read. Value k fills placeholder k of the
// format, rendered by its type (see ZORSimExcField).
#pragma once

#include "ZORSimContainersExport.h"
#include "ZORBasException.h"
#include "ZORSimUttAssert.h"
#include "ZORSimUttExceptionString.h"
#include "ZORSimUttSer.h"
#include "atr_String.h"

#include <string>

enum class ZORSimExcFieldKind {
    Int32,
    UInt32,
    Int64,
    UInt64,
    Bool,
    Float,
    Double,
    String,      // ZORSimUttExceptionString<N>
    SystemError, // ZORBasSystemError
    TextPointer, // const char*, kept without copying
    ParserPlace, // ZORSimUttSerParserPlace
    ParserError, // ZORSimUttSerParserError
    SerSystemError
};

// How a field type is described and rendered into a message.
template <class T> struct ZORSimExcField;

#define ZORSIM_EXC_PLAIN_FIELD(Type, Kind)                                                                   \
    template <> struct ZORSimExcField<Type> {                                                                \
        static constexpr ZORSimExcFieldKind kind = ZORSimExcFieldKind::Kind;                                 \
        static constexpr int capacity = 0;                                                                   \
        static Type Render(Type v) { return v; }                                                             \
    }
ZORSIM_EXC_PLAIN_FIELD(int, Int32);
ZORSIM_EXC_PLAIN_FIELD(unsigned int, UInt32);
ZORSIM_EXC_PLAIN_FIELD(long long, Int64);
ZORSIM_EXC_PLAIN_FIELD(unsigned long long, UInt64);
ZORSIM_EXC_PLAIN_FIELD(float, Float);
ZORSIM_EXC_PLAIN_FIELD(double, Double);
ZORSIM_EXC_PLAIN_FIELD(const char*, TextPointer);
#undef ZORSIM_EXC_PLAIN_FIELD

template <> struct ZORSimExcField<bool> {
    static constexpr ZORSimExcFieldKind kind = ZORSimExcFieldKind::Bool;
    static constexpr int capacity = 0;
    static int Render(bool v) { return v ? 1 : 0; }
};
template <int N> struct ZORSimExcField<ZORSimUttExceptionString<N>> {
    static constexpr ZORSimExcFieldKind kind = ZORSimExcFieldKind::String;
    static constexpr int capacity = N;
    static const char* Render(const ZORSimUttExceptionString<N>& v) { return v.AsString(); }
};
#define ZORSIM_EXC_TEXT_FIELD(Type, Kind)                                                                    \
    template <> struct ZORSimExcField<Type> {                                                                \
        static constexpr ZORSimExcFieldKind kind = ZORSimExcFieldKind::Kind;                                 \
        static constexpr int capacity = 0;                                                                   \
        static const char* Render(const Type& v) { return v.AsString(); }                                    \
    }
ZORSIM_EXC_TEXT_FIELD(ZORBasSystemError, SystemError);
ZORSIM_EXC_TEXT_FIELD(ZORSimUttSerParserPlace, ParserPlace);
ZORSIM_EXC_TEXT_FIELD(ZORSimUttSerParserError, ParserError);
ZORSIM_EXC_TEXT_FIELD(ZORSimUttSerSystemError, SerSystemError);
#undef ZORSIM_EXC_TEXT_FIELD

// The message of an exception: the format with field k in placeholder k. The
// caller's mode is never used; every step runs with mode false so that a
// message does not depend on who asks for it.
template <class... Ts> atr_String ZORSimExcFormat(const char* format, const Ts&... fields) {
    const ZORBasStringMode mode(false);
    atr_translate translation(format, mode);
    int index = 0;
    (atr_SubstituteFormat(translation, ++index, ZORSimExcField<Ts>::Render(fields), mode), ...);
    return translation.Result(mode);
}

// A heap copy through the class's allocation operators; null when they give
// none, and the storage goes back to them if copying throws.
template <class T> ZORBasException* ZORSimExcCloneOf(const T& original) {
    void* storage = T::operator new(sizeof(T));
    if (storage == nullptr)
        return nullptr;
    try {
        return ::new (storage) T(original);
    } catch (...) {
        T::operator delete(storage);
        throw;
    }
}

// ---- preprocessor machinery over the (Field, Type) lists -------------------

#define ZORSIM_PP_CAT(a, b) ZORSIM_PP_CAT_I(a, b)
#define ZORSIM_PP_CAT_I(a, b) a##b
#define ZORSIM_PP_STR(a) ZORSIM_PP_STR_I(a)
#define ZORSIM_PP_STR_I(a) #a
#define ZORSIM_PP_NARGS(...) ZORSIM_PP_NARGS_I(__VA_OPT__(__VA_ARGS__, ) 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define ZORSIM_PP_NARGS_I(_1, _2, _3, _4, _5, _6, _7, _8, _9, N, ...) N

// M(index, field) for each field, one after the other.
#define ZORSIM_PP_EACH(M, ...) ZORSIM_PP_CAT(ZORSIM_PP_EACH_, ZORSIM_PP_NARGS(__VA_ARGS__))(M, __VA_ARGS__)
#define ZORSIM_PP_EACH_0(M, ...)
#define ZORSIM_PP_EACH_1(M, a) M(1, a)
#define ZORSIM_PP_EACH_2(M, a, b) ZORSIM_PP_EACH_1(M, a) M(2, b)
#define ZORSIM_PP_EACH_3(M, a, b, c) ZORSIM_PP_EACH_2(M, a, b) M(3, c)
#define ZORSIM_PP_EACH_4(M, a, b, c, d) ZORSIM_PP_EACH_3(M, a, b, c) M(4, d)
#define ZORSIM_PP_EACH_5(M, a, b, c, d, e) ZORSIM_PP_EACH_4(M, a, b, c, d) M(5, e)
#define ZORSIM_PP_EACH_6(M, a, b, c, d, e, f) ZORSIM_PP_EACH_5(M, a, b, c, d, e) M(6, f)
#define ZORSIM_PP_EACH_7(M, a, b, c, d, e, f, g) ZORSIM_PP_EACH_6(M, a, b, c, d, e, f) M(7, g)
#define ZORSIM_PP_EACH_8(M, a, b, c, d, e, f, g, h) ZORSIM_PP_EACH_7(M, a, b, c, d, e, f, g) M(8, h)
#define ZORSIM_PP_EACH_9(M, a, b, c, d, e, f, g, h, i) ZORSIM_PP_EACH_8(M, a, b, c, d, e, f, g, h) M(9, i)

// M(index, field) for each field, separated by commas.
#define ZORSIM_PP_LIST(M, ...) ZORSIM_PP_CAT(ZORSIM_PP_LIST_, ZORSIM_PP_NARGS(__VA_ARGS__))(M, __VA_ARGS__)
#define ZORSIM_PP_LIST_0(M, ...)
#define ZORSIM_PP_LIST_1(M, a) M(1, a)
#define ZORSIM_PP_LIST_2(M, a, b) ZORSIM_PP_LIST_1(M, a), M(2, b)
#define ZORSIM_PP_LIST_3(M, a, b, c) ZORSIM_PP_LIST_2(M, a, b), M(3, c)
#define ZORSIM_PP_LIST_4(M, a, b, c, d) ZORSIM_PP_LIST_3(M, a, b, c), M(4, d)
#define ZORSIM_PP_LIST_5(M, a, b, c, d, e) ZORSIM_PP_LIST_4(M, a, b, c, d), M(5, e)
#define ZORSIM_PP_LIST_6(M, a, b, c, d, e, f) ZORSIM_PP_LIST_5(M, a, b, c, d, e), M(6, f)
#define ZORSIM_PP_LIST_7(M, a, b, c, d, e, f, g) ZORSIM_PP_LIST_6(M, a, b, c, d, e, f), M(7, g)
#define ZORSIM_PP_LIST_8(M, a, b, c, d, e, f, g, h) ZORSIM_PP_LIST_7(M, a, b, c, d, e, f, g), M(8, h)
#define ZORSIM_PP_LIST_9(M, a, b, c, d, e, f, g, h, i) ZORSIM_PP_LIST_8(M, a, b, c, d, e, f, g, h), M(9, i)

// The constructor values handed to the base: a parenthesised list of 1-based
// value positions in the base's own parameter order, e.g. (1, 2) or (3, 1, 2).
#define ZORSIM_PP_UNPAREN(...) __VA_ARGS__
#define ZORSIM_EXC_X_BASE_ARG(i, k) a##k
#define ZORSIM_EXC_BASE_CALL(BaseArgs) ZORSIM_EXC_BASE_CALL_I(ZORSIM_PP_UNPAREN BaseArgs)
#define ZORSIM_EXC_BASE_CALL_I(...) ZORSIM_PP_LIST(ZORSIM_EXC_X_BASE_ARG, __VA_ARGS__)

#define ZORSIM_EXC_FNAME(name, type) name
#define ZORSIM_EXC_FTYPE(name, type) type
#define ZORSIM_EXC_MEMBER_NAME(f) ZORSIM_PP_CAT(m_, ZORSIM_EXC_FNAME f)
#define ZORSIM_EXC_GETTER_NAME(f) ZORSIM_PP_CAT(Get, ZORSIM_EXC_FNAME f)

#define ZORSIM_EXC_X_PARAM(i, f) ZORSIM_EXC_FTYPE f a##i
#define ZORSIM_EXC_X_GETTER(i, f)                                                                            \
    ZORSIM_EXC_FTYPE f ZORSIM_EXC_GETTER_NAME(f)() const {                                                   \
        return ZORSIM_EXC_MEMBER_NAME(f);                                                                    \
    }
#define ZORSIM_EXC_X_MEMBER(i, f) ZORSIM_EXC_FTYPE f ZORSIM_EXC_MEMBER_NAME(f);
#define ZORSIM_EXC_X_INIT(i, f) , ZORSIM_EXC_MEMBER_NAME(f)(a##i)
#define ZORSIM_EXC_X_COPY(i, f) , ZORSIM_EXC_MEMBER_NAME(f)(other.ZORSIM_EXC_MEMBER_NAME(f))
#define ZORSIM_EXC_X_VALUE(i, f) , ZORSIM_EXC_MEMBER_NAME(f)

// Class declaration, for the block headers.
#define ZORSIM_EXC_DECLARE(Name, CodeValue, Base, BaseArgs, Format, ...)                                     \
    class ZORSIM_API Name : public Base {                                                                    \
    public:                                                                                                  \
        static constexpr int kCode = CodeValue;                                                              \
        __VA_OPT__(explicit) Name(ZORSIM_PP_LIST(ZORSIM_EXC_X_PARAM, __VA_ARGS__));                          \
        Name(const Name& other);                                                                             \
        ~Name() override;                                                                                    \
        ZORSIM_PP_EACH(ZORSIM_EXC_X_GETTER, __VA_ARGS__)                                                     \
        int GetCode() const override;                                                                        \
        atr_String AsString(ZORBasStringMode mode) const override;                                           \
        ZORBasException* Clone() const override;                                                             \
        void Propagate() const override;                                                                     \
                                                                                                             \
    private:                                                                                                 \
        ZORSIM_PP_EACH(ZORSIM_EXC_X_MEMBER, __VA_ARGS__)                                                     \
    };

// Out-of-line definitions, for the block sources. Propagate reports the
// message of the most derived class (a virtual call) and throws a copy; with
// reports switched off it skips the formatting nobody would read.
#define ZORSIM_EXC_DEFINE(Name, CodeValue, Base, BaseArgs, Format, ...)                                      \
    Name::Name(ZORSIM_PP_LIST(ZORSIM_EXC_X_PARAM, __VA_ARGS__))                                              \
        : Base(ZORSIM_EXC_BASE_CALL(BaseArgs)) ZORSIM_PP_EACH(ZORSIM_EXC_X_INIT, __VA_ARGS__) {}             \
    Name::Name(const Name& other) : Base(other) ZORSIM_PP_EACH(ZORSIM_EXC_X_COPY, __VA_ARGS__) {}            \
    Name::~Name() = default;                                                                                 \
    int Name::GetCode() const {                                                                              \
        return CodeValue;                                                                                    \
    }                                                                                                        \
    atr_String Name::AsString(ZORBasStringMode) const {                                                      \
        return ZORSimExcFormat(Format ZORSIM_PP_EACH(ZORSIM_EXC_X_VALUE, __VA_ARGS__));                      \
    }                                                                                                        \
    ZORBasException* Name::Clone() const {                                                                   \
        return ZORSimExcCloneOf(*this);                                                                      \
    }                                                                                                        \
    void Name::Propagate() const {                                                                           \
        if (ZORSimUttAssert::WillReportException()) {                                                        \
            const atr_String text = this->AsString(ZORBasStringMode(false));                                 \
            ZORSimUttAssert::ReportException(text.c_str());                                                  \
        }                                                                                                    \
        throw Name(*this);                                                                                   \
    }
