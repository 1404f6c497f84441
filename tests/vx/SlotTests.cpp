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

#include <tuple>

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

TEST(Slots, OfAViewTakeNoneOfTheClass)
{
    const std::tuple<const char*, std::size_t, std::size_t> cases[] = {
        {"ComObject", slotsOf<ComObject>(), 5},
        {"ClassFactory", slotsOf<vorb::ClassFactory>(), 5},
        {"CVXAbstractConnector", slotsOf<CVXAbstractConnector>(), 6},
        {"Object", slotsOf<Object>(), OBJECT},
        {"Comparator", slotsOf<util::Comparator>(), OBJECT + 2},
        {"Locale", slotsOf<i18n::Locale>(), OBJECT},
        {"StringBundle", slotsOf<i18n::StringBundle>(), OBJECT + 4},
        {"Logger", slotsOf<log::Logger>(), OBJECT + 2},
        {"AbstractLogWriter", slotsOf<log::AbstractLogWriter>(), OBJECT + 2},
        {"PropertySet", slotsOf<util::PropertySet>(), OBJECT + 6},
        {"CVXProperty", slotsOf<CVXProperty>(), OBJECT + 9},
        {"CVXPropertySet", slotsOf<CVXPropertySet>(), OBJECT + 10},
        {"String", slotsOf<String>(), BUFFER},
        {"AbstractCharBuffer", slotsOf<util::AbstractCharBuffer>(), BUFFER},
        {"AbstractByteBuffer", slotsOf<util::AbstractByteBuffer>(), BUFFER},
        {"ROCharBuffer", slotsOf<util::ROCharBuffer>(), BUFFER},
        {"ROByteBuffer", slotsOf<util::ROByteBuffer>(), BUFFER},
        {"RWCharBuffer", slotsOf<util::RWCharBuffer>(), BUFFER},
        {"RWByteBuffer", slotsOf<util::RWByteBuffer>(), BUFFER},
        {"MTCharBuffer", slotsOf<util::MTCharBuffer>(), BUFFER},
        {"MTByteBuffer", slotsOf<util::MTByteBuffer>(), BUFFER},
    };
    for (const auto& [name, slots, wanted] : cases)
        EXPECT_EQ(slots, wanted) << name;
}

} // namespace
