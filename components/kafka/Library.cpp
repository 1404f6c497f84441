#include "../ComponentLibrary.h"
#include "Kafka.h"

namespace vx::components {

namespace {

constexpr _GUID CLASS_ID {0x448570A7, 0x2100, 0x43F5, {0x9E, 0x8E, 0x9D, 0x36, 0x48, 0x71, 0x1A, 0x6A}};

Kafka* makeKafka()
{
    return new Kafka;
}

vorb::DllModule& library()
{
    static vorb::ClassData rows[] = {
        makerRow<makeKafka>(
            CLASS_ID, [] { return u"Velmaris.Kafka"; }, [] { return u"Messages of Kafka clusters"; }),
        {},
    };
    static vorb::DllModule module(rows);
    return module;
}

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::library())
