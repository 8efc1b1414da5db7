#pragma once

#include <cstring>

/// Tells an object of exactly one class from one of a class that a host derived from it. Where no
/// override can exist nobody sees the copies that an override might look at, and they are spared.
///
/// Not typeid(): it needs what a host's class that is built with -fno-rtti lacks. Every class with
/// virtual functions has a table of them, though, and an object begins with a pointer to that of
/// its own class (the Itanium C++ ABI, which gcc and clang keep).
namespace seamrevision
{

template <typename Class>
const void *virtualTable(const Class &object)
{
    const void *table = nullptr;
    std::memcpy(&table, static_cast<const void *>(&object), sizeof table);
    return table;
}

/// The virtual table of Class itself. The constructor of Class must have called this: while it
/// runs, every object is exactly a Class, whatever becomes of it later. All calls give what the
/// first one found.
template <typename Class>
const void *ownVirtualTable(const Class &object)
{
    static const void *const table = virtualTable(object);
    return table;
}

template <typename Class>
bool isExactly(const Class &object)
{
    return virtualTable(object) == ownVirtualTable(object);
}

} // namespace seamrevision
