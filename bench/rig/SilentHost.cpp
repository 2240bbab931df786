#include "SilentHost.h"

namespace axlbench {

namespace {

constexpr int kFailureLevel = 2;

}  // namespace

SilentHost::SilentHost() {
    orbel::addObserver(*this);
}

SilentHost::~SilentHost() {
    orbel::removeObserver(*this);
}

void SilentHost::logged(const CSI_base*, int level, std::string_view, std::string_view) {
    if (level == kFailureLevel) {
        failures_.fetch_add(1);
    }
}

void SilentHost::published(const CSI_base*, uint32_t, uint32_t, std::span<const uint8_t>) {
    publications_.fetch_add(1);
}

void SilentHost::stopped(const CSI_base*, const stServiceParams_t*, std::string_view) {
    stops_.fetch_add(1);
}

void SilentHost::threadStarted(const CSI_base*) {}

void SilentHost::threadEnded(const CSI_base*, std::string_view) {}

}  // namespace axlbench
