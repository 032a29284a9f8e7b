/* The conditional-access library, as far as this library uses it. */
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace CA_API {

/**
 * Answers questions about a recording's viewing rights.
 *
 * The order of the operations is the order of the closed library's table of functions, so it may
 * never change, and no virtual destructor may come to stand among them. Each returns true when
 * the question was answered. Thread safety is that of the platform's implementation.
 */
class CAService {
public:
    /** The one object of the process, owned by the conditional-access library; null without one. */
    static CAService *CAPVRInstance();

    virtual void Unused0() = 0;
    virtual void Unused1() = 0;
    virtual bool IsFileExceededRetentionLimit(std::string &path, bool *exceeded) = 0;
    virtual bool GetCIThumbType(std::string &path, int *type) = 0;
    virtual bool GetContentInfo(std::string &path, int *info_type, unsigned char *play_count) = 0;
    virtual bool GetExpiredContentSections(std::string &path, std::vector<std::pair<int, int>> &sections) = 0;
    virtual bool IsBlockedByParentalControl(std::string &path, bool *blocked) = 0;
    virtual bool CheckThumbnailValidation(std::string &path, int *position, bool *valid) = 0;

protected:
    CAService() = default;
    CAService(const CAService &) = default;
    CAService &operator=(const CAService &) = default;
    ~CAService() = default;
};

} // namespace CA_API
