#pragma once

#include <vx/String.h>
#include <vx/vorb/Component.h>

#include <cstddef>
#include <utility>

// Shared by the component libraries.

namespace vx::components {

/// The module of a component library. For each class that it offers there is a description `Class` with `ID`,
/// `progId()`, `description()`, and `make()`, which returns a new object.
template <class... Class>
vorb::DllModule& libraryOf()
{
    static vorb::ClassData rows[] = {
        {&Class::ID, vorb::createComponentBy<Class::make>, vorb::createComponentFactory, Class::progId,
            Class::description, ComObject::GetComVersionIndependentProgID, nullptr}...,
        {},
    };
    static vorb::DllModule module(rows);
    return module;
}

/// As above, for the descriptions `Class<0>` to `Class<count - 1>`.
template <template <std::size_t> class Class, std::size_t count>
vorb::DllModule& libraryOf()
{
    return []<std::size_t... indexes>(std::index_sequence<indexes...>)->vorb::DllModule&
    {
        return libraryOf<Class<indexes>...>();
    }
    (std::make_index_sequence<count>());
}

/// A reference to the new `object`, which keeps the library of `module` loaded to the end of its life.
template <class T>
Reference<T> inModule(vorb::Module* module, T* object)
{
    object->SetComModule(module);
    return object;
}

/// The folder of the library that contains `address`. Throws Exception if the system does not know it.
String libraryFolder(const void* address);

} // namespace vx::components
