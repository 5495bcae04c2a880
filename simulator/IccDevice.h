#pragma once

#include "rf/IccPluginApi.h"
#include "simulator/EventThread.h"
#include "simulator/ScenarioPlayer.h"

#include <device/Mutex.h>

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace simulator {

// How iccSendReqSync answers: what the device is like, the beginning of the request, what was set last.
struct IccResponse {
    uint8_t status;
    uint8_t hwId;
    uint8_t version;  // as iccApis_init gave it
    uint8_t flags;    // 1: screen on, 2: UART log on
    uint32_t reqId;
    uint8_t modes[5];  // values of the mode table
    uint8_t echoLength;
    uint8_t echo[230];
    uint8_t satelliteTechnology;
    uint8_t satelliteAntenna;
    uint16_t txBands[2];
    uint16_t txParam1[2];
    uint8_t txParam2[2];
};
static_assert(sizeof(IccResponse) == 256);

// The ICC controller that the plugin stands for. Each operation is the plugin function of the like name: it does what
// the scenario says, or else changes the state and succeeds. Events come from a thread of the device's own, one at a
// time. Lives until the process ends, and its thread with it. Thread: any.
class IccDevice {
public:
    static IccDevice& get();

    void init(uint8_t version, uint32_t speed, uint8_t brindle);
    ICC_APIS_RESULT registerEvent(IccEventType type, void* context, IccEventCallback callback);
    void sendRequest(uint32_t reqId, const uint8_t* req, uint32_t reqLen, void* resp, uint32_t respLen,
                     uint32_t timeoutMs);
    spi_cmd_err_code_e setSatelliteAntState(int technology, int antenna, int state);
    spi_cmd_err_code_e setTxSharingState(uint8_t enable, const std::vector<uint16_t>& band,
                                         const std::vector<uint16_t>& param1, const std::vector<uint8_t>& param2);
    spi_cmd_err_code_e setAclState(uint8_t enable, uint16_t freq, uint8_t cc, uint8_t ant);
    spi_cmd_err_code_e setCoexAntState(const IccCoexAntType& state);
    uint8_t getHwId();
    void enableUartLog();
    void reloadConfig();
    void setScreenState(bool on);
    spi_cmd_err_code_e getState();
    void sendEventInd(uint32_t event, const uint8_t* data, uint16_t size);

private:
    // Entry i of the mode table has the type i + 1.
    enum Mode { ACL, TX_SHARING, SATELLITE_ANT, WIFI_ANT, COEX_ANT, MODE_COUNT };
    struct Listener {
        void* context;
        IccEventCallback callback;
    };
    struct State {
        std::array<Listener, ICC_EVENT_COEX_ANT_CHANGED> listeners{};  // entry i: event type i + 1
        std::array<uint8_t, MODE_COUNT> modes{};
        bool isScreenOn = true;
        bool isUartLogOn = false;
        uint8_t version = 0;
        // As set last, the first two values of each kind.
        uint8_t satelliteTechnology = 0;
        uint8_t satelliteAntenna = 0;
        uint16_t txBands[2]{};
        uint16_t txParam1[2]{};
        uint8_t txParam2[2]{};

        [[nodiscard]] IccStateInfoType info() const;
    };
    using Effect = std::function<void(State& state)>;  // runs with the lock held

    IccDevice();

    // Plays the reaction's events, too.
    Reaction serve(size_t request, const Effect& effect);
    // The same without the events, for who has an answer to write before they come.
    Reaction react(size_t request, const Effect& effect);
    spi_cmd_err_code_e command(size_t request, const Effect& effect);
    void apply(const Effect& effect);
    IccResponse makeResponse(uint32_t reqId, const uint8_t* req, uint32_t reqLen, const ScenarioAnswer& answer);

    template <typename T>
    void report(IccEventType type, const T& record);
    void play(const ScenarioEvent& event);
    void deliver(IccEventType type, void* data, int size);

    device::Mutex mLock;
    State mState SUBSYS_GUARDED_BY(mLock);
    EventThread mEvents;
    ScenarioPlayer mPlayer;
};

}  // namespace simulator
