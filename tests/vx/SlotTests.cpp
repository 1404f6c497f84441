#include "legacy/CVXAbstractConnector.h"
#include "legacy/CVXProperty.h"
#include "legacy/CVXPropertySet.h"
#include "tests/Slots.h"
#include "tests/vx/Common.h"
#include "vx/vxlib4.h"

#include <typeinfo>

using namespace vx;

namespace {

constexpr std::size_t VIEW = 3, OBJECT = 11, BUFFER = 20;

struct OpenModule : vorb::Module {
    static void check()
    {
        expectSlots("Module", 2,
            {&OpenModule::CanUnloadNow, &OpenModule::GetClassObject,
                slotOf<std::int32_t(const char16_t*)>(&OpenModule::RegisterServer), &OpenModule::UnregisterServer,
                &OpenModule::RegisterClassEntry, &OpenModule::UnregisterClassEntry, &OpenModule::TryGetClassObject});
    }
};

struct OpenBundle : i18n::StringBundle {
    static void check()
    {
        expectSlots("StringBundle", OBJECT,
            {&OpenBundle::getString, &OpenBundle::getKeys, &StringBundle::getLocale, &OpenBundle::lookupString});
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
    using N = Number;
    expectSlots("Number", OBJECT,
        {&N::toInt64, &N::toDouble, &N::toByte, &N::toShort, &N::toInt, &N::toLong, &N::toUByte, &N::toUShort,
            &N::toUInt, &N::toULong, &N::toFloat, &N::toBigInteger, &N::toBigDecimal, &N::toInt8, &N::toInt16,
            &N::toInt32, &N::toUInt8, &N::toUInt16, &N::toUInt32, &N::toUInt64,
            slotOf<String(int) const>(&UnsignedInteger::toString)});
    expectSlots("BigInteger", slotOf(&N::toUInt64) + 1, {&math::BigInteger::getSize});
    expectSlots("BigDecimal", slotOf(&N::toUInt64) + 1, {&math::BigDecimal::getSize});
    using Digest = crypto::MessageDigest;
    expectSlots("MessageDigest", OBJECT,
        {&Digest::update, &Digest::getDigest, &Digest::reset, &Digest::getLength, &Digest::getName});

    OpenBundle::check();
    using Bundle = IVXResourceBundle;
    expectSlots("IVXResourceBundle", VIEW,
        {&Bundle::LoadCharBuffer, &Bundle::LoadString, &Bundle::GetCount, &Bundle::GetResource, &Bundle::GetLocale});
    using L = IVXLocale;
    expectSlots("IVXLocale", VIEW,
        {&L::GetLanguage, &L::GetCountry, &L::GetVariant, &L::GetDisplayLanguage, &L::GetDisplayLanguageLoc,
            &L::GetDisplayCountry, &L::GetDisplayCountryLoc, &L::GetDisplayVariant, &L::GetDisplayVariantLoc,
            &L::GetDisplayName, &L::GetDisplayNameLoc, &L::ToString});
}

TEST(Slots, OfCollectionsFollowTheOrderOfTheInterface)
{
    using namespace collections::vorb;
    using C = Collection;
    expectSlots("Collection", VIEW,
        {&C::add, &C::addAll, &C::clear, &C::compareTo, &C::contains, &C::containsAll, &C::createIterator,
            &C::createConstIterator, &C::equals, &C::getSize, &C::hashCode, &C::remove, &C::removeAll, &C::retainAll});
    expectSlots("List", VIEW + 14,
        {slotOf<bool(int, IVXUnknown*)>(&List::add), slotOf<bool(int, const C&)>(&List::addAll),
            slotOf<Reference<IVXUnknown>(int)>(&List::remove), &List::createListIterator,
            &List::createConstListIterator, slotOf<Reference<List>(int, int)>(&List::createSubList),
            slotOf<Reference<const List>(int, int) const>(&List::createSubList), &List::get, &List::indexOf,
            &List::lastIndexOf, &List::set});
    using ConstSet = Reference<const Set>() const;
    using ChangeableSet = Reference<Set>();
    expectSlots("Map", VIEW,
        {&Map::clear, &Map::compareTo, &Map::containsKey, &Map::containsValue, slotOf<ConstSet>(&Map::createEntrySet),
            slotOf<ChangeableSet>(&Map::createEntrySet), slotOf<ConstSet>(&Map::createKeySet),
            slotOf<ChangeableSet>(&Map::createKeySet), slotOf<Reference<const C>() const>(&Map::createValueCollection),
            slotOf<Reference<C>()>(&Map::createValueCollection), &Map::equals, &Map::get, &Map::getSize, &Map::hashCode,
            &Map::put, &Map::putAll, &Map::remove});
    expectSlots("MapEntry", VIEW,
        {&MapEntry::compareTo, &MapEntry::equals, &MapEntry::getKey, &MapEntry::getValue, &MapEntry::hashCode,
            &MapEntry::setValue});
    expectSlots("Iterator", VIEW, {&ConstIterator::hasNext, &ConstIterator::next, &Iterator::remove});
    using Back = ConstListIterator;
    expectSlots(
        "ConstListIterator", VIEW + 2, {&Back::hasPrevious, &Back::previous, &Back::nextIndex, &Back::previousIndex});
    expectSlots("ListIterator", VIEW + 3, {&ListIterator::add, &ListIterator::set});
    expectSlots("IVXComparator", VIEW, {&IVXComparator::Compare, &IVXComparator::Hash});
    expectSlots(
        "Comparator", OBJECT - 1, {&util::Comparator::toString, &util::Comparator::compare, &util::Comparator::hash});
}

TEST(Slots, OfTypedCollectionsAndMapsFollowTheOrderOfTheInterface)
{
    using namespace collections;
    using C = Collection<String>;
    using L = List<String>;
    expectSlots("Collection", OBJECT,
        {&C::add, &C::contains, &C::remove, &C::addAll, &C::clear, &C::createIterator, &C::createConstIterator,
            &C::getSize, &C::isEmpty, &C::removeAll, &C::retainAll});
    expectSlots("List", OBJECT + 11,
        {slotOf<bool(int, String*)>(&L::add), slotOf<bool(int, const C&)>(&L::addAll),
            slotOf<Reference<String>(int)>(&L::remove), &L::createListIterator, &L::createConstListIterator,
            slotOf<Reference<L>(int, int)>(&L::createSubList),
            slotOf<Reference<const L>(int, int) const>(&L::createSubList), &L::get, &L::indexOf, &L::lastIndexOf,
            &L::set});
    using I = IntegerHashMap;
    expectSlots("IntegerHashMap", OBJECT,
        {&I::clear, &I::get, &I::getSize, &I::isEmpty, &I::put, &I::remove, &I::createKeySet});
    using S = StringHashMap;
    expectSlots("StringHashMap", OBJECT,
        {&S::clear, slotOf<Reference<Object>(const char16_t*, int) const>(&S::get),
            slotOf<Reference<Object>(const String&) const>(&S::get), &S::getSize,
            slotOf<bool(const char16_t*, int) const>(&S::containsKey),
            slotOf<bool(const String&) const>(&S::containsKey), &S::isEmpty, &S::put, &S::remove, &S::createKeySet});
    using M = Str1HashMap<void*>; // the destructor takes the first two places
    expectSlots("Str1HashMap", 2,
        {&M::clear, &M::containsKey, &M::get, &M::getSize, &M::put, &M::remove, &M::iteratorInit, &M::iteratorHasNext,
            &M::iteratorNext, &M::normalizeKey});
    using B = StrBuf1;
    expectSlots("StrBuf1", 2, {&B::AddRef, &B::Release, &B::isPrivatelyHeld, &B::getBufCapacity});
    expectSlots("Str1", 2, {&Str1::fastAllocBuffer});
}

struct OpenSet : CVXPropertySet {
    using CVXPropertySet::getProperty;
};

TEST(Slots, OfPropertiesFollowTheOrderOfTheInterface)
{
    using util::PropertySet;
    expectSlots("PropertySet", OBJECT,
        {&PropertySet::set, &PropertySet::get, &PropertySet::hasProperty, &PropertySet::getKeys, &PropertySet::clear,
            &PropertySet::remove});
    using util::vorb::IPropertyKeyIterator;
    using I = util::vorb::IPropertySet;
    expectSlots("IPropertySet", VIEW, {&I::Set, &I::Get, &I::Remove, &I::GetKeyIterator});
    expectSlots("IPropertyKeyIterator", VIEW, {&IPropertyKeyIterator::IsAtEnd, &IPropertyKeyIterator::GetNext});

    using P = CVXProperty;
    expectSlots("property", OBJECT,
        {&P::getKey, slotOf<CVXSmartPtr<Object>() const>(&P::getValue), &P::getValueString, &P::getValueLong,
            &P::getValueDouble, slotOf<void (P::*)(double)>(&P::set), slotOf<void (P::*)(std::int32_t)>(&P::set),
            slotOf<void (P::*)(const String&)>(&P::set), slotOf<void (P::*)(Object*)>(&P::set)});
    using V = IVXProperty2;
    expectSlots("property view", VIEW,
        {&V::GetKey, &V::GetValueString, &V::GetValueLong, &V::GetValueDouble, &V::SetValueString, &V::SetValueLong,
            &V::SetValueDouble, &V::GetValue, &V::SetValue});
    using S = CVXPropertySet;
    expectSlots("set", OBJECT,
        {slotOf<void (S::*)(const String&, double)>(&S::set), slotOf<void (S::*)(const String&, std::int32_t)>(&S::set),
            slotOf<void (S::*)(const String&, const String&)>(&S::set),
            slotOf<void (S::*)(const String&, Object*)>(&S::set), &S::getValue, &S::getValueString, &S::getValueLong,
            &S::getValueDouble, slotOf<CVXSmartPtr<const P>(const String&) const>(&OpenSet::getProperty),
            slotOf<CVXSmartPtr<P>(const String&)>(&OpenSet::getProperty)});
    using W = IVXPropertySet2;
    expectSlots("set view", VIEW,
        {&W::SetString, &W::GetString, &W::SetLong, &W::GetLong, &W::SetDouble, &W::GetDouble, &W::GetCount,
            &W::GetProperty, &W::GetParent, &W::Set, &W::Get, &W::GetProperty2, &W::GetParent2});
    using X = IVXConnector;
    expectSlots("connector view", VIEW, {&X::Connect, &X::SetProperty, &X::GetProperty});
    expectSlots("connector", VIEW + 2, {&CVXAbstractConnector::connect});
}

/// Expects that a class derived from a subclass of `T` appends its operations from `first` on.
template <class... T>
void expectEnds(std::size_t first)
{
    (expectSlots(typeid(T).name(), first, {slotsOf<T>()}), ...);
}

TEST(Slots, OfAViewTakeNoneOfTheClass)
{
    expectEnds<ComObject, vorb::ClassFactory>(5);
    expectEnds<CVXAbstractConnector>(6);
    using namespace net::vorb;
    expectEnds<Object, i18n::Locale, io::ReadWriteChannel, AbstractAcceptor, AbstractConnector, AbstractTransport,
        VorbAcceptor, VorbConnector, VorbTransport>(OBJECT);
    expectEnds<io::LockingChannel>(slotsOf<sync::LockObject>());
    expectEnds<util::Comparator, log::Logger, log::AbstractLogWriter>(OBJECT + 2);
    expectEnds<i18n::StringBundle, i18n::StringMapBundle>(OBJECT + 4);
    expectEnds<util::PropertySet>(OBJECT + 6);
    expectEnds<CVXProperty>(OBJECT + 9);
    expectEnds<CVXPropertySet>(OBJECT + 10);
    expectEnds<String, util::AbstractCharBuffer, util::AbstractByteBuffer, util::ROCharBuffer, util::ROByteBuffer,
        util::RWCharBuffer, util::RWByteBuffer, util::MTCharBuffer, util::MTByteBuffer>(BUFFER);
}

} // namespace
