// SPDX-License-Identifier: MIT
#include "Scenario.h"

#include <stdexcept>

#include "Arp/System/Commons/Exceptions/Exceptions.h"

namespace faultmatrix {

using vplc::Fault;

void Scenario::failNext() {
    fail(row_.call.c_str(), Fault::next(row_.error));
}

void Scenario::failTimes(int count) {
    fail(row_.call.c_str(), Fault::times(count, row_.error));
}

void Scenario::fail(const char* function, const Fault& fault) {
    rig_.plant().inject(function, fault);
}

std::string Scenario::restartFailure() {
    try {
        rig_.deliver(kRestart, {1});
    } catch (const Arp::System::Commons::ArgumentException& e) {
        return "ArgumentException: " + e.GetMessage();
    } catch (const Arp::System::Commons::InvalidOperationException& e) {
        return "InvalidOperationException: " + e.GetMessage();
    } catch (const Arp::System::Commons::InvalidCastException& e) {
        return "InvalidCastException: " + e.GetMessage();
    } catch (const Arp::Exception& e) {
        return "Arp::Exception: " + e.GetMessage();
    } catch (const std::logic_error&) {
        return "std::logic_error";
    }
    return "";
}

}  // namespace faultmatrix
