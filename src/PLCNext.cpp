// SPDX-License-Identifier: MIT
#include "PLCNext.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <ctime>
#include <utility>

#include "Arp/Device/Interface/Services/DeviceControlServiceProxyFactory.hpp"
#include "Arp/Device/Interface/Services/IDeviceControlService.hpp"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "Arp/System/Rsc/ServiceManager.hpp"
#include "ArpModuleLoader.h"
#include "LogMessage.h"
#include "modules/AXL_F_AI2_AO2.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "modules/IbIlConversion.h"

namespace {

constexpr long nPublicationPauseNs = 1000000;
constexpr long nScanPauseNs = 100000000;

// A signal does not shorten the pause: nanosleep is resumed for the time that was left. This is
// the only blocking call of the scan, which is what lets the host end a driver thread at a pause.
void pauseFor(long nNanoseconds) {
    timespec t{0, nNanoseconds};
    while (nanosleep(&t, &t) == -1 && errno == EINTR) {
    }
}

float loadAnalog(const stEventParams_t& event) {
    float fValue = 0.0f;
    std::memcpy(&fValue, event.pData, sizeof fValue);
    return fValue;
}

// Copies no more than the payload holds and no more than the float has.
void storeAnalog(const stEventParams_t& event, float fValue) {
    std::memcpy(event.pData, &fValue, std::min<std::size_t>(event.nSize, sizeof fValue));
}

}  // namespace

CSI_base* CreateSiObject(stSP_Params_t params, std::map<unsigned, stMappingElem_t>* mappings,
                         std::map<unsigned, stServiceParams_t>* services) {
    return new CPLCNext(std::move(params), *mappings, *services);
}

CPLCNext::CPLCNext(stSP_Params_t params, std::map<unsigned, stMappingElem_t> mappings,
                   std::map<unsigned, stServiceParams_t> services)
    : CSI_base(std::move(params), std::move(mappings), std::move(services)),
      CPosixThread(0),
      m_pModule(nullptr),
      m_nConsecutiveNumber(0) {
    PrintVersionNumber();
    // The index operator on purpose: a missing setting reads as an empty text, which the parse
    // refuses.
    m_nConsecutiveNumber = parseNumber(m_spParams.mapParams["Consecutive Number"]);
}

CPLCNext::~CPLCNext() {
    delete m_pModule;
}

void CPLCNext::PrintVersionNumber() {
    logMessage(4, "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]", "Plc Next", 1, 3, 2,
               m_spParams.sServiceName.c_str());
}

ServiceType CPLCNext::getServiceType(const std::string& name) {
    if (name == "AnalogIn") {
        return AnalogIn;
    }
    if (name == "AnalogOut") {
        return AnalogOut;
    }
    if (name == "DigitalIn") {
        return DigitalIn;
    }
    if (name == "DigitalOut") {
        return DigitalOut;
    }
    if (name == "RestartDevice") {
        return RestartDevice;
    }
    return Unsupported;
}

void CPLCNext::initialize() {
    // The platform's C interface may only be used once the library is attached to the runtime.
    ArpModuleLoader::initialize();
    if (ArpModuleLoader::m_bErrorStatus) {
        logMessage(2,
                   "CPLCNext: Not attached to the PLCnext runtime (loading the Arp system module "
                   "failed); the driver does not start.");
        stopWithError("PLCnext runtime not available");
        return;
    }

    if (m_spParams.sDeviceType == "AXL_F_DI8_1_DO8_1") {
        m_pModule = new AXL_F_DI8_1_DO8_1(m_nConsecutiveNumber);
    } else if (m_spParams.sDeviceType == "AXL_F_AI2_AO2") {
        m_pModule = new AXL_F_AI2_AO2(m_nConsecutiveNumber);
    }

    ArpPlcAxio_ReadFromAxioToGds(0);

    for (const auto& entry : m_mapServices) {
        const stServiceParams_t service = entry.second;
        const ServiceType eType = getServiceType(service.sServiceType);
        // Without a module no kind is supported; refusing each service keeps the walk from
        // calling through the absent module.
        if (m_pModule == nullptr || !m_pModule->isServiceTypeSupported(eType)) {
            stopWithError(service, "Unsupported service type.");
            return;
        }
        switch (eType) {
            case AnalogIn:
                initAnalogIn(service);
                break;
            case AnalogOut:
                initAnalogOut(service);
                break;
            case DigitalIn:
                initDigitalIn(service);
                break;
            case DigitalOut:
                initDigitalOut(service);
                break;
            case RestartDevice:
                m_lstRestartEventIds.push_back(service.nEventId);
                break;
            default:
                break;
        }
        if (m_bStopped) {
            return;
        }
    }

    ArpPlcAxio_WriteFromGdsToAxio(0);
    CPosixThread::start();
}

void CPLCNext::initDigitalIn(const stServiceParams_t& service) {
    // A private copy: a key that is missing is added here, never to the host's record.
    std::map<std::string, std::string> mapParams = service.mapParams;
    const int nPin = parseNumber(mapParams["PinNum"]);
    if (!isPinFree(service, nPin, DigitalIn,
                   {"Digital input pin with number &d is not available. Valid numbers are %s.",
                    "Invalid digital input number.",
                    "Digital input pin with number %d is already in use.", "Pin already in use"})) {
        return;
    }
    m_mapDigitalInputs[nPin] = newInputEvent(service.nEventId, 1);
    if (!m_pModule->registerService(nPin, DigitalIn)) {
        stopWithError(service, "Can't register service for digital input pin.");
    }
}

void CPLCNext::initAnalogIn(const stServiceParams_t& service) {
    // A private copy: a key that is missing is added here, never to the host's record.
    std::map<std::string, std::string> mapParams = service.mapParams;
    const int nPin = parseNumber(mapParams["PinNum"]);
    if (!isPinFree(service, nPin, AnalogIn,
                   {"Analog input pin with number &d is not available. Valid numbers are %s",
                    "Invalid analog input number.",
                    "Analog input pin with number %d is already in use.", "Pin already in use."})) {
        return;
    }
    m_mapAnalogInputs.insert({nPin, newInputEvent(service.nEventId, sizeof(float))});
    if (!m_pModule->registerService(nPin, AnalogIn)) {
        logMessage(2, "Could not register service for analog input pin %i", nPin);
        stopWithError(service, "Could not register service for analog input pin");
    }
}

void CPLCNext::initDigitalOut(const stServiceParams_t& service) {
    // A private copy: a key that is missing is added here, never to the host's record.
    std::map<std::string, std::string> mapParams = service.mapParams;
    const int nPin = parseNumber(mapParams["PinNum"]);
    const int nInitVal = parseNumber(mapParams["InitVal"]);
    if (!isPinFree(
            service, nPin, DigitalOut,
            {"Digital output pin with number &d is not available. Valid numbers are %s.",
             "Invalid digital output pin number.",
             "Digital output pin with number %d is already in use.", "Pin already in use."})) {
        return;
    }
    if (!m_pModule->registerService(nPin, DigitalOut)) {
        stopWithError(service, "Could not register service for digital output pin.");
        return;
    }
    // The conversion keeps the low 8 bits: 256 writes 0 and -1 writes 255.
    m_pModule->writeDigital(nPin, static_cast<unsigned char>(nInitVal));
    ServiceEvent& output = m_mapOutputs[nPin];
    output.nEventId = service.nEventId;
    output.eType = DigitalOut;
}

void CPLCNext::initAnalogOut(const stServiceParams_t& service) {
    // A private copy: a key that is missing is added here, never to the host's record.
    std::map<std::string, std::string> mapParams = service.mapParams;
    const int nPin = parseNumber(mapParams["PinNum"]);
    const int nInitVal = parseNumber(mapParams["InitVal"]);
    const unsigned short nWord = to_ib_il(static_cast<float>(nInitVal));
    if (!isPinFree(service, nPin, AnalogOut,
                   {"Analog output pin with number &d is not available. Valid numbers are %s.",
                    "Invalid analog output number",
                    "Analog output pin with number %d is already in use.", "Pin already in use"})) {
        return;
    }
    if (!m_pModule->registerService(nPin, AnalogOut)) {
        stopWithError(service, "Can't register service for analog output pin");
        return;
    }
    m_pModule->writeAnalog(nPin, nWord);
    ServiceEvent& output = m_mapOutputs[nPin];
    output.nEventId = service.nEventId;
    output.eType = AnalogOut;
}

bool CPLCNext::isPinFree(const stServiceParams_t& service, int nPin, ServiceType eType,
                         const PinRefusal& refusal) {
    if (!m_pModule->isServiceAvailable(nPin, eType)) {
        const std::string sRange = m_pModule->getValidRange(eType);
        // The format's "&d" is plain text; the pin number is passed all the same, ahead of the
        // range text, as the host's log has always received it.
        logMessage(2, refusal.szNotAvailableFormat, nPin, sRange.c_str());
        stopWithError(service, refusal.szNotAvailable);
        return false;
    }
    if (m_pModule->isServiceAlreadyRegistered(nPin, eType)) {
        logMessage(2, refusal.szInUseFormat, nPin);
        stopWithError(service, refusal.szInUse);
        return false;
    }
    return true;
}

stEventParams_t CPLCNext::newInputEvent(uint32_t nEventId, std::size_t nMinimumSize) {
    // The index operator on purpose: an event id the host did not describe gets an element of
    // size 0 in the mapping table.
    const uint16_t nDataSize = m_mapMappings[nEventId].nDataSize;
    stEventParams_t event;
    // At least nMinimumSize bytes, so that the scan can keep the last value of a pin in the
    // buffer whatever the host configured as its size. The buffers are never released: the scan
    // thread that writes them is ended by the host, not by the driver. This is their one
    // allocation site, so that a leak check can name it.
    event.pData = new unsigned char[std::max<std::size_t>(nDataSize, nMinimumSize)]();
    event.nId = nEventId;
    event.nSize = nDataSize;
    return event;
}

// Number settings are read as std::stoi reads them (base 10): leading blanks and a sign are
// accepted, text after the digits is ignored, and a text without digits or beyond the int range
// throws std::invalid_argument or std::out_of_range with the text "stoi". Configurations rely on
// exactly this, and stoi leaves the caller's errno alone when it succeeds.
int CPLCNext::parseNumber(const std::string& sText) {
    return std::stoi(sText);
}

void CPLCNext::run() {
    ArpPlcAxio_ReadFromAxioToGds(0);
    for (const auto& entry : m_mapDigitalInputs) {
        const stEventParams_t event = entry.second;
        event.pData[0] = m_pModule->readDigital(entry.first);
        publishEvent(event);
        pauseFor(nPublicationPauseNs);
    }
    for (const auto& entry : m_mapAnalogInputs) {
        const stEventParams_t event = entry.second;
        storeAnalog(event, from_ib_il(m_pModule->readAnalog(entry.first)));
        publishEvent(event);
        pauseFor(nPublicationPauseNs);
    }

    for (;;) {
        ArpPlcAxio_ReadFromAxioToGds(0);
        for (const auto& entry : m_mapDigitalInputs) {
            const stEventParams_t event = entry.second;
            const unsigned char byValue = m_pModule->readDigital(entry.first);
            if (byValue != event.pData[0]) {
                event.pData[0] = byValue;
                publishEvent(event);
            }
        }
        for (const auto& entry : m_mapAnalogInputs) {
            const stEventParams_t event = entry.second;
            const float fValue = from_ib_il(m_pModule->readAnalog(entry.first));
            // The dead band is measured against the last published value, so that a slow drift
            // is published once it adds up to more than 0.1.
            const float fChange = std::fabs(loadAnalog(event) - fValue);
            if (static_cast<double>(fChange) > 0.1) {
                storeAnalog(event, fValue);
                publishEvent(event);
            }
        }
        pauseFor(nScanPauseNs);
    }
}

void CPLCNext::onReceiveEvent(stEventParams_t event) {
    // The host takes its messages as std::string; made once, so that no way through an event
    // allocates, its error paths included.
    static const std::string sNullDataPointer("Null data pointer");
    static const std::string sUnsubscribedEvent("Unsubscribed event received");

    if (event.pData == nullptr) {
        stopWithError(sNullDataPointer);
        return;
    }

    bool bHandled = false;
    for (const auto& entry : m_mapOutputs) {
        if (entry.second.nEventId != event.nId) {
            continue;
        }
        if (entry.second.eType == AnalogOut) {
            onReceiveAnalogOut(entry.first, event);
        } else if (entry.second.eType == DigitalOut) {
            onReceiveDigitalOut(entry.first, event);
        }
        bHandled = true;
    }
    if (bHandled) {
        ArpPlcAxio_WriteFromGdsToAxio(0);
        return;
    }

    for (const unsigned nRestartId : m_lstRestartEventIds) {
        if (nRestartId == event.nId) {
            restartDevice();
            ArpPlcAxio_WriteFromGdsToAxio(0);
            return;
        }
    }

    stopWithError(sUnsubscribedEvent);
    ArpPlcAxio_WriteFromGdsToAxio(0);
}

void CPLCNext::onReceiveDigitalOut(int pin, stEventParams_t event) {
    m_pModule->writeDigital(pin, event.pData[0]);
}

void CPLCNext::onReceiveAnalogOut(int pin, stEventParams_t event) {
    m_pModule->writeAnalog(pin, to_ib_il(loadAnalog(event)));
}

// A fresh service object for every restart, released right after the call. The log line comes
// first, so that it is written even when the service cannot be reached.
void CPLCNext::restartDevice() {
    logMessage(4, "CPLCNext: Device restart requested from Runtime, going for reboot now.");
    auto pService = Arp::System::Rsc::ServiceManager::GetService<
        Arp::Device::Interface::Services::IDeviceControlService>(
        Arp::Device::Interface::Services::DeviceControlServiceProxyFactory::GetInstance());
    pService->RestartDevice();
}
