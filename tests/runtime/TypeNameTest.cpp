// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "Arp/Device/Interface/Services/IDeviceControlService.hpp"
#include "Arp/System/Core/AppDomain.hpp"
#include "Arp/System/Core/Arp.h"

namespace {

TEST(TypeName, OfTheDeviceControlInterfaceIsItsFullyQualifiedName) {
    EXPECT_EQ(Arp::TypeName<Arp::Device::Interface::Services::IDeviceControlService>(),
              "Arp::Device::Interface::Services::IDeviceControlService");
}

TEST(TypeName, OfTheAppDomainIsArpAppDomain) {
    EXPECT_EQ(Arp::TypeName<Arp::AppDomain>(), "Arp::AppDomain");
}

TEST(TypeName, OfAFundamentalTypeIsItsKeywords) {
    EXPECT_EQ(Arp::TypeName<int>(), "int");
    EXPECT_EQ(Arp::TypeName<unsigned long>(), "unsigned long");
}

TEST(TypeName, DemanglingATextThatIsNoMangledNameGivesTheTextBack) {
    EXPECT_EQ(Arp::DemangleTypeName("not a type!"), "not a type!");
}

TEST(TypeName, DemanglingNullGivesAnEmptyText) {
    EXPECT_EQ(Arp::DemangleTypeName(nullptr), "");
}

}  // namespace
