#include <vx/vxlib4.h>

#include <iostream>

using namespace vx;

class Counter : public Object, public exec::IRunnable {
public:
    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap() { return Object::GetComIntfMap(); }

    // IRunnable
    void* run() override
    {
        for (int i = 0; i < 100'000; ++i) {
            const sync::ScopedLock hold(m_lock);
            ++m_count;
        }
        return this;
    }

    int getCount() const { return m_count; }

private:
    sync::Mutex m_lock;
    int m_count = 0;
};

int main()
{
    const Reference<Counter> counter(new Counter);
    exec::Thread first(counter.get());
    exec::Thread second(counter.get(), u"second");
    first.start();
    second.start();
    first.join();
    second.join();
    std::cout << counter->getCount() << '\n';
}
