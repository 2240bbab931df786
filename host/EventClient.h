// SPDX-License-Identifier: MIT
#pragma once

#include "HostExport.h"
#include "HostRecords.h"

// The host's event-client interface. The order of the virtual operations is part of the binary
// contract: destructor, receiveEvent, onReceiveEvent(unsigned, bool).
class ORBEL_API CEventClient {
public:
    virtual ~CEventClient();

    // The entry through which the host delivers an event to its client.
    virtual void receiveEvent(const stEventParams_t& event) = 0;

    // A host notification that drivers do not use; does nothing by default.
    virtual void onReceiveEvent(unsigned nId, bool bFlag);
};
