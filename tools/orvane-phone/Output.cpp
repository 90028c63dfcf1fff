#include "orvane-phone/Output.h"

#include "usage/StandardOutput.h"

void Output::print(const std::string& text) {
    if (m_failed || StandardOutput::write("orvane-phone", text)) {
        return;
    }
    m_failed = true;
    if (m_failureListener) {
        m_failureListener();
    }
}
