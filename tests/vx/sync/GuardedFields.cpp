// Compiled by Clang alone, with -verify: it must give exactly the errors that are named here.
#include "vx/sync/Condition.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/ScopedLock.h"

namespace {

using namespace vx::sync;

struct Account {
    mutable Mutex m_lock;
    int m_balance VX_GUARDED_BY(m_lock) = 0;
    int* m_history VX_PT_GUARDED_BY(m_lock) = nullptr;

    void add(int amount) VX_REQUIRES(m_lock) { m_balance += amount; }
};

[[maybe_unused]] void lockIsHeld(Account& account)
{
    const ScopedLock hold(account.m_lock);
    account.add(1);
    *account.m_history = account.m_balance;
}

[[maybe_unused]] void lockIsMissing(Account& account)
{
    account.m_balance = 1; // expected-error {{writing variable 'm_balance' requires holding}}
    *account.m_history = 1; // expected-error {{writing the value pointed to by 'm_history' requires holding}}
    account.add(1); // expected-error {{calling function 'add' requires holding}}
}

[[maybe_unused]] int lockIsReleasedTooEarly(Account& account)
{
    {
        const ScopedLock hold(account.m_lock);
    }
    return account.m_balance; // expected-error {{reading variable 'm_balance' requires holding}}
}

[[maybe_unused]] int lockIsThatOfAnotherObject(const Account& account, const Account& other)
{
    const ScopedLock hold(other.m_lock);
    return account.m_balance; // expected-error {{requires holding}} expected-note {{found near match}}
}

[[maybe_unused]] void lockIsKept(Account& account)
{
    if (account.m_lock.tryWait()) // expected-note {{acquired here}}
        ++account.m_balance;
} // expected-error {{is not held on every path}}

struct Table {
    ReaderWriterLock m_lock;
    int m_size VX_GUARDED_BY(m_lock) = 0;
    Condition m_changed;
    bool m_isOpen VX_GUARDED_BY(m_changed) = false;
};

[[maybe_unused]] int readersOnlyRead(Table& table)
{
    table.m_lock.waitShared();
    const int size = table.m_size;
    table.m_size = 0; // expected-error {{writing variable 'm_size' requires holding}}
    table.m_lock.signalShared();
    return size;
}

[[maybe_unused]] void aWaitNeedsTheLockOfTheCondition(Table& table)
{
    table.m_changed.wait(); // expected-error {{calling function 'wait' requires holding}}
    const Condition::Holder hold(table.m_changed);
    while (!table.m_isOpen)
        table.m_changed.wait();
}

} // namespace
