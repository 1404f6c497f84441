#include "../ComponentLibrary.h"
#include "Kafka.h"

namespace vx::components {

namespace {

struct KafkaClass {
    static constexpr _GUID ID {0x448570A7, 0x2100, 0x43F5, {0x9E, 0x8E, 0x9D, 0x36, 0x48, 0x71, 0x1A, 0x6A}};
    static const char16_t* progId() { return u"Velmaris.Kafka"; }
    static const char16_t* description() { return u"Messages of Kafka clusters"; }
    static Kafka* make() { return new Kafka; }
};

} // namespace

} // namespace vx::components

VX_COMPONENT_LIBRARY(vx::components::libraryOf<vx::components::KafkaClass>())
