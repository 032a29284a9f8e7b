// Stands for a device's conditional-access library when the library is linked for one. Never run.
#include <ca_service.h>

CA_API::CAService *CA_API::CAService::CAPVRInstance() { return nullptr; }
