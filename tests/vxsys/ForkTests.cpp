#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vxsys/Component.h"
#include "vxsys/Registry.h"
#include "vxsys/Time.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(Fork, LeavesNothingLockedInAChildWhileAnotherThreadWorks)
{
    constexpr int FORKS = 100;
    const Scratch scratch;
    const ScopedVariable store("VXSYS4_REGISTRY", (scratch / "store").c_str());
    const struct {
        const char* name;
        void (*work)(unsigned number);
    } rows[] = {
        {"registry",
            [](unsigned number) {
                VXRegistrySetValue(VX_HKEY_USER, u"k", u"", VX_REG_UINT32, &number, sizeof number);
            }},
        {"class",
            [](unsigned) {
                _GUID id;
                VXComClassIDFromProgID(u"No.Such", &id);
            }},
        {"offer",
            [](unsigned number) {
                const _GUID id {number, 0, 0, {}};
                std::uint32_t token = 0;
                constexpr VXCreateFunction create = [](void*, IVXUnknown*, const _GUID*, void**) { return -1; };
                VXComRegisterClassObject(u"An.Offer", &id, create, nullptr, &token);
                VXComRevokeClassObject(token);
            }},
        {"date",
            [](unsigned) {
                STRUCT_VX_TIME time;
                VXTimeGetSystem(&time);
                char text[100];
                VXTimeFormatDate(&time, 1, text, sizeof text);
            }},
        {"offset",
            [](unsigned number) {
                std::int32_t ahead = 0;
                VXTimeGetOffset(number, &ahead);
            }},
    };
    for (const auto& row : rows) {
        std::atomic<bool> ends = false;
        std::jthread other([&] {
            for (unsigned number = 1; !ends; ++number)
                row.work(number);
        });
        // A change of the registry waits for the disk, so nearly each fork is in the middle of one.
        for (int i = &row == rows ? FORKS - 10 : 0; i < FORKS && !testing::Test::HasFailure(); ++i) {
            Child child([&](Child::Side&) {
                ::alarm(5);
                row.work(0);
            });
            EXPECT_EQ(child.wait(), 0) << row.name;
        }
        ends = true;
    }
}

} // namespace
