#ifndef SONOLET_TESTS_SERVICE_SERVER_UNTRUSTED_SERVER_H
#define SONOLET_TESTS_SERVICE_SERVER_UNTRUSTED_SERVER_H

#include "../../pages/Command.h"

#include <glib.h>
#include <signal.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace sonolet::test {

// A server with a certificate that it has signed itself.
class UntrustedServer final {
public:
    explicit UntrustedServer(const std::string& folder) {
        const std::string key = folder + "/key.pem";
        const std::string certificate = folder + "/certificate.pem";
        const Outcome made = ::run(
            {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
             "-nodes", "-days", "1", "-subj", "/CN=localhost", "-addext",
             "subjectAltName=DNS:localhost,IP:127.0.0.1", "-keyout", key, "-out", certificate},
            {});
        if (made.exitCode != 0) {
            throw std::runtime_error("no certificate: " + made.errors);
        }
        const char* const command[] = {"openssl", "s_server",  "-accept", "127.0.0.1:0",
                                       "-key",    key.c_str(), "-cert",   certificate.c_str(),
                                       "-www",    nullptr};
        gint output = -1;
        if (!g_spawn_async_with_pipes(
                nullptr, const_cast<gchar**>(command), nullptr,
                static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD |
                                         G_SPAWN_STDERR_TO_DEV_NULL),
                nullptr, nullptr, &process, nullptr, &output, nullptr, nullptr)) {
            throw std::runtime_error("no openssl");  // a process 0 would be this one and its own
        }
        FILE* const lines = fdopen(output, "r");
        char line[200] = "";
        while (std::strncmp(line, "ACCEPT ", 7) != 0 && fgets(line, sizeof(line), lines)) {
        }
        const std::string said = line;
        port = said.substr(said.rfind(':') + 1, 5);
        port.erase(port.find_last_not_of('\n') + 1);
        fclose(lines);
    }
    ~UntrustedServer() {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    UntrustedServer(const UntrustedServer&) = delete;
    UntrustedServer& operator=(const UntrustedServer&) = delete;
    std::string url() const { return "https://127.0.0.1:" + port; }

private:
    GPid process = 0;
    std::string port;
};

}  // namespace sonolet::test

#endif
