#include "LibWrapper.h"

LibWrapper::~LibWrapper() {
    sp_session_logout(session);
    sp_session_release(session);
}
