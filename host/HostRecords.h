// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Plain records exchanged between the host runtime and its drivers. Field order and types are
// part of the binary contract: a driver built against these declarations is used by a host
// built separately.

struct stTagElem_t {
    uint32_t nHostWord = 0;
    std::string sHostText1;
    std::string sHostText2;
    std::string sHostText3;
};

struct stAppBlocInfo_t {
    std::string sHostText1;
    std::string sHostText2;
    std::string sHostText3;
};

// Describes the data block of one event id.
struct stMappingElem_t {
    uint16_t nDataSize = 0;
    std::string sHostText1;
    std::string sHostText2;
    std::vector<stTagElem_t> vecTags;
};

// One configured service of a driver.
struct stServiceParams_t {
    uint8_t byHost1 = 0;
    uint8_t byHost2 = 0;
    uint32_t nEventId = 0;
    std::string sName;
    std::string sServiceType;
    std::map<std::string, std::string> mapParams;
};

// The parameters of one driver instance.
struct stSP_Params_t {
    std::string sName;
    std::string sServiceName;
    std::string sDeviceType;
    std::map<std::string, std::string> mapParams;
};

// One event; small enough to pass by value.
struct stEventParams_t {
    uint8_t* pData = nullptr;
    uint32_t nId = 0;
    uint32_t nSize = 0;
};
