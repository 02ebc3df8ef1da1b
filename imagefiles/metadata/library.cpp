#include "imagefiles/metadata/library.h"

#include <atomic>

namespace tessarine {

namespace {

std::mutex only;
std::atomic<bool> damageSeen = false;

void hear(int level, const char*) {
    if (level >= Exiv2::LogMsg::error) damageSeen = true;
}

}  // namespace

MetadataLibrary::MetadataLibrary() : lock_(only) {
    Exiv2::LogMsg::setHandler(&hear);
    Exiv2::XmpParser::initialize();
    damageSeen = false;
}

MetadataLibrary::~MetadataLibrary() { Exiv2::XmpParser::terminate(); }

bool MetadataLibrary::sawDamage() { return damageSeen.exchange(false); }

}  // namespace tessarine
