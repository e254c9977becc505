#include "SoundServer.h"

#include "Command.h"

namespace {

constexpr char form[] = "format=s16le rate=44100 channels=2";

}  // namespace

// Without the priority that a machine may give its own, so that it behaves alike everywhere.
SoundServer::SoundServer(const std::string& itsFolder) : folder(itsFolder) {
    const std::string socket = folder + "/pulse";
    server = std::make_unique<Process>(std::vector<std::string>{
        "pulseaudio", "--daemonize=no", "-n", "--exit-idle-time=-1", "--disable-shm=yes",
        "--use-pid-file=no", "--high-priority=no", "--realtime=no", "--log-level=info",
        "--log-target=stderr", std::string("--load=module-null-sink sink_name=nowhere ") + form,
        "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket});
    // NOLINTBEGIN(concurrency-mt-unsafe): no other thread runs yet
    setenv("PULSE_SERVER", ("unix:" + socket).c_str(), 1);
    setenv("PULSE_RUNTIME_PATH", (folder + "/pulse-runtime").c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)
    server->awaitLine("Daemon startup complete");
}

// It has begun when the first bytes are there: the server, as long as it had no client, was seconds
// ahead with its silence.
void SoundServer::record() {
    const std::string file = "'" + folder + "/heard.pcm'";
    recorder = std::make_unique<Process>(std::vector<std::string>{
        "/bin/bash", "-c",
        "exec parec --device=nowhere.monitor --format=s16le --rate=44100 --channels=2"
        " --latency-msec=100 > >(head -c 4096 > " +
            file + "; echo recording; cat >> " + file + "; echo recorded)"});
    recorder->awaitLine("recording");
}

SoundServer::Frames SoundServer::heard() {
    recorder->signal(SIGINT);
    recorder->awaitLine("recorded");
    return framesOf(contentsOf(folder + "/heard.pcm"));
}

SoundServer::Frames SoundServer::framesOf(const std::string& pcm) {
    Frames frames(pcm.size() / sizeof(std::uint32_t));
    std::memcpy(frames.data(), pcm.data(), frames.size() * sizeof(std::uint32_t));
    return frames;
}
