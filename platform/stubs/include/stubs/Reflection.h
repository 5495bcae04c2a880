#pragma once

#include <android/binder_auto_utils.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

// What stubs/Table.h says about the package: its records with their fields, its interfaces with their methods.
namespace subsys_stubs {

template <class Owner, class Type>
struct Field {
    const char* name;
    const char* doc;  // the comment in the interface, or empty
    Type Owner::*member;
};

template <class Owner, class Type>
constexpr Field<Owner, Type> field(const char* name, const char* doc, Type Owner::*member) {
    return {name, doc, member};
}

template <class I, class... Args>
struct Method {
    using Arguments = std::tuple<std::remove_cvref_t<Args>...>;

    uint32_t code;
    const char* name;
    const char* doc;
    ndk::ScopedAStatus (I::*call)(Args...);
    std::array<const char*, sizeof...(Args)> arguments;  // their names
};

template <class I, class... Args, class... Names>
constexpr Method<I, Args...> method(uint32_t code, const char* name, const char* doc,
                                    ndk::ScopedAStatus (I::*call)(Args...), Names... arguments) {
    static_assert(sizeof...(Names) == sizeof...(Args), "each argument has a name");
    return {code, name, doc, call, {arguments...}};
}

// `name`, and `fields`, a tuple of Field in the order of the interface.
template <class R>
struct RecordTraits;

// `name`, `oneway`, and `methods`, a tuple of Method in the order of their codes.
template <class I>
struct InterfaceTraits;

template <class T>
concept Record = requires {
    RecordTraits<T>::fields;
};

template <class T>
constexpr bool isInterfacePointer = false;
template <class I>
constexpr bool isInterfacePointer<std::shared_ptr<I>> = requires {
    InterfaceTraits<I>::methods;
};

template <class... T>
struct TypeList {};

// Calls visitor(field, value) for each field.
template <class R, class Visitor>
requires Record<std::remove_const_t<R>>
constexpr void forEachField(R& record, Visitor&& visitor) {
    std::apply([&](const auto&... field) { (visitor(field, record.*field.member), ...); },
               RecordTraits<std::remove_const_t<R>>::fields);
}

template <class I, class Visitor>
constexpr void forEachMethod(Visitor&& visitor) {
    std::apply([&](const auto&... method) { (visitor(method), ...); }, InterfaceTraits<I>::methods);
}

template <class I>
constexpr bool hasMethod(std::string_view name) {
    bool has = false;
    forEachMethod<I>([&](const auto& method) { has = has || method.name == name; });
    return has;
}

template <class I, uint32_t code>
constexpr const auto& methodOf() {
    constexpr auto& METHOD = std::get<code - 1>(InterfaceTraits<I>::methods);
    static_assert(METHOD.code == code, "the codes are 1, 2, 3...");
    return METHOD;
}

}  // namespace subsys_stubs
