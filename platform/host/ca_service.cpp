// Host stand-in of the conditional-access library: a set without a conditional-access module.
#include <ca_service.h>

CA_API::CAService *CA_API::CAService::CAPVRInstance() { return nullptr; }
