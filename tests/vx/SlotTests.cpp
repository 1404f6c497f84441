#include "legacy/CVXAbstractConnector.h"
#include "legacy/CVXProperty.h"
#include "legacy/CVXPropertySet.h"
#include "tests/Slots.h"
#include "vx/Class.h"
#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/i18n/StringBundle.h"
#include "vx/log/AbstractLogWriter.h"
#include "vx/log/Logger.h"
#include "vx/util/Comparator.h"
#include "vx/util/MTByteBuffer.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/util/PropertySet.h"
#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/vorb/ClassFactory.h"
#include "vx/vorb/Module.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace vx;

namespace {

constexpr std::size_t VIEW = 3, OBJECT = 11, BUFFER = 20;

struct OpenModule : vorb::Module {
    static void check()
    {
        expectSlots("Module", 2,
            {&OpenModule::CanUnloadNow, &OpenModule::GetClassObject,
                slotOf<std::int32_t (OpenModule::*)(const char16_t*)>(&OpenModule::RegisterServer),
                &OpenModule::UnregisterServer, &OpenModule::RegisterClassEntry, &OpenModule::UnregisterClassEntry,
                &OpenModule::TryGetClassObject});
    }
};

template <class Abstract, class View>
void checkBuffer()
{
    expectSlots("buffer", OBJECT,
        {&Abstract::getLength, &Abstract::getData, &Abstract::getReadLock, &Abstract::releaseReadLock,
            &Abstract::isWritable, &Abstract::getWriteLock, &Abstract::ensureCapacity, &Abstract::releaseWriteLock,
            &Abstract::freeExtra});
    expectSlots("buffer view", VIEW,
        {&View::GetLength, &View::GetData, &View::GetReadLock, &View::ReleaseReadLock, &View::IsWritable,
            &View::GetWriteLock, &View::EnsureCapacity, &View::ReleaseWriteLock, &View::FreeExtra});
}

TEST(Slots, FollowTheOrderOfTheInterface)
{
    expectSlots("IVXUnknown", 0, {&IVXUnknown::QueryInterface, &IVXUnknown::AddRef, &IVXUnknown::Release});
    expectSlots("IVXComparable", VIEW, {&IVXComparable::CompareTo, &IVXComparable::HashCode});
    expectSlots("IVXClassFactory", VIEW, {&IVXClassFactory::CreateInstance, &IVXClassFactory::LockServer});
    expectSlots("ComObject", 0, {&ComObject::QueryInterface, &ComObject::AddRef, &ComObject::Release});
    expectSlots("Object", 5,
        {&Object::clone, &Object::compareTo, &Object::equals, &Object::getClass, &Object::hashCode, &Object::toString});
    expectSlots("Class", OBJECT, {&Class::getName, &Class::isInstance, &Class::createInstance});
    expectSlots("Exception", OBJECT, {&Exception::getDescription, &Exception::getResult});
    OpenModule::check();
    checkBuffer<String, IVXCharBuffer>();
    checkBuffer<util::AbstractCharBuffer, IVXCharBuffer>();
    checkBuffer<util::AbstractByteBuffer, IVXByteBuffer>();
}

/// Expects that a class derived from one of `T` appends its operations from `first` on.
template <class... T>
void expectEnds(std::size_t first)
{
    (expectSlots(typeid(T).name(), first, {slotsOf<T>()}), ...);
}

TEST(Slots, OfAViewTakeNoneOfTheClass)
{
    expectEnds<ComObject, vorb::ClassFactory>(5);
    expectEnds<CVXAbstractConnector>(6);
    expectEnds<Object, i18n::Locale>(OBJECT);
    expectEnds<util::Comparator, log::Logger, log::AbstractLogWriter>(OBJECT + 2);
    expectEnds<i18n::StringBundle>(OBJECT + 4);
    expectEnds<util::PropertySet>(OBJECT + 6);
    expectEnds<CVXProperty>(OBJECT + 9);
    expectEnds<CVXPropertySet>(OBJECT + 10);
    expectEnds<String, util::AbstractCharBuffer, util::AbstractByteBuffer, util::ROCharBuffer, util::ROByteBuffer,
        util::RWCharBuffer, util::RWByteBuffer, util::MTCharBuffer, util::MTByteBuffer>(BUFFER);
}

} // namespace
