// SPDX-License-Identifier: MIT
#include "ArpModuleLoader.h"

#include <unistd.h>

#include <exception>
#include <iostream>

#include "Arp/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Arp/System/Core/AppDomain.hpp"
#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/Exception.hpp"
#include "Arp/System/Module/ArpSystemModule.h"
#include "Arp/System/Rsc/RscManager.hpp"

std::mutex plcStateMutex;
std::condition_variable plcStartCondition;
bool plcStarted = false;

bool ArpModuleLoader::m_bErrorStatus = false;

extern "C" __attribute__((visibility("default"))) int ArpSystemModule_Load(
    const char* /*binaryDirectory*/, const char* applicationName, const char* acfSettingsPath) {
    try {
        Arp::AppDomain* pDomain = ArpSystemModuleMain(applicationName, acfSettingsPath);
        if (pDomain == nullptr) {
            return 3;
        }
        if (Arp::Singleton<Arp::AppDomain>::pInstance == nullptr) {
            Arp::Singleton<Arp::AppDomain>::pInstance = pDomain;
        }
        Arp::System::Commons::Diagnostics::Logging::LogManager::AssignAppDomain(*pDomain);
        Arp::System::Rsc::RscManager::AssignAppDomain(*pDomain);
        return 0;
    } catch (const Arp::Exception& e) {
        std::cout << "Exception of type Arp::Exception occured during call of "
                  << "ArpSystemModule_Load"
                  << " : " << e.GetMessage() << std::endl;
    } catch (const std::exception& e) {
        std::cout << "Exception of type std::exception occured during call of "
                  << "ArpSystemModule_Load"
                  << " : " << e.what() << std::endl;
    } catch (...) {
        std::cout << "Exception of unknown type occured during call of "
                  << "ArpSystemModule_Load" << std::endl;
    }
    return 4;
}

void PlcOperationHandler(PlcOperation operation) {
    if (operation != PlcOperation_StartCold && operation != PlcOperation_StartWarm &&
        operation != PlcOperation_StartHot) {
        return;
    }
    std::lock_guard<std::mutex> lock(plcStateMutex);
    plcStarted = true;
    plcStartCondition.notify_all();
}

void ArpModuleLoader::initialize() {
    static ArpModuleLoader ml;
}

ArpModuleLoader::ArpModuleLoader() {
    // Registered before the load, so that a start reported during the load is not missed.
    ArpPlcDomain_SetHandler(PlcOperationHandler);

    std::string sSettingsPath = ArpGetSelfPath() + "./Default.acf.settings";
    if (ArpSystemModule_Load("/usr/lib", "tarnwick", sSettingsPath.c_str()) != 0) {
        m_bErrorStatus = true;
        return;
    }

    std::unique_lock<std::mutex> lock(plcStateMutex);
    plcStartCondition.wait(lock, [] { return plcStarted; });
}

ArpModuleLoader::~ArpModuleLoader() = default;

std::string ArpModuleLoader::ArpGetSelfPath() {
    char szPath[4096];
    ssize_t nLength = readlink("/proc/self/exe", szPath, sizeof(szPath) - 1);
    if (nLength < 0) {
        return std::string();
    }
    szPath[nLength] = '\0';
    return directoryOf(szPath);
}

std::string ArpModuleLoader::directoryOf(const std::string& sPath) {
    std::string::size_type nSeparator = sPath.find_last_of("/\\");
    if (nSeparator == std::string::npos) {
        return sPath;
    }
    return sPath.substr(0, nSeparator + 1);
}
