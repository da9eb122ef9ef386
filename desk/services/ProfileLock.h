#pragma once

#include "desk/base/Result.h"
#include "desk/services/Profile.h"

#include <QLockFile>

namespace desk::services
{

/// Lets one process at a time work with a profile: a second one would overwrite what the first keeps.
class ProfileLock
{
public:
    explicit ProfileLock(const Profile& profile);

    /// Takes the profile, which is made where it is not there; let go with the object. Fails while another process has
    /// it. A crashed process has none.
    Status claim();

private:
    Profile m_profile;
    QLockFile m_file;
};

} // namespace desk::services
