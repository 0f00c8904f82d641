#pragma once
#include <Hy/HyIntersectSubscriber.h>

#include <cstdio>

namespace Hy {
class HyContactMaterial;
class HyUniverse;

/// Writes a line for each pair of parts that touches, in each step: time, universe, geometries,
/// materials, and what their contact material is like.
///
/// A configuration file says where to and how much:
///     filename: contacts.log
///     detail_level: terse
/// The level is terse, verbose (without a second line), 0 or 1. A number goes before the last dot of
/// the file's name, or to its end, so that each of several subscribers has a file of its own.
class HY_API HyIntersectSubscriberLogging : public HyIntersectSubscriber {
public:
    enum DetailsLevel : int {
        kTerse = 0,
        kVerbose = 1,
    };
    /// Environment variable that names the configuration file.
    static constexpr const char* kEnvVariableName = "HALCYR_HYCONTACT_LOGGING";

    /// A file that is missing, or says no file name, or a log that can't be written: a warning, and the
    /// subscriber is not valid.
    explicit HyIntersectSubscriberLogging(const char* configFile);
    /// The configuration file is that of the environment.
    HyIntersectSubscriberLogging();
    HyIntersectSubscriberLogging(const HyIntersectSubscriberLogging&) = delete;
    HyIntersectSubscriberLogging& operator=(const HyIntersectSubscriberLogging&) = delete;
    /// Closes the log. Unregister first.
    ~HyIntersectSubscriberLogging() override;

    [[nodiscard]] bool isValid() const { return mFile != nullptr; }
    void setEnableLogging(bool on) { mEnableLogging = on; }
    [[nodiscard]] bool getEnableLogging() const { return mEnableLogging; }
    [[nodiscard]] DetailsLevel getDetailsLevel() const { return mDetailsLevel; }
    /// Subscribes to the first touch and the touching of parts, ahead of others.
    /// @return 0; 1 if the subscriber is not valid; 2 for a universe of null
    int registerLogging(HyUniverse* universe);
    /// Answers likewise.
    int unregisterLogging(HyUniverse* universe);

    /// Writes nothing.
    void notifyDisjoint(eIntersectEventType event, HyIntersectResult* result) override;
    void notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                         HyDynamicsResponseInput* input) override;

private:
    void init(const char* configFile);
    void readConfig(std::FILE* config, const char* configFile);
    void printContactMaterial(const HyContactMaterial* material) const;
    void printRollingResistance(const HyContactMaterial& material) const;
    void printFriction(const HyContactMaterial& material) const;
    void printFrictionAxis(const HyContactMaterial& material, int axis) const;

    std::FILE* mFile = nullptr;
    DetailsLevel mDetailsLevel = kVerbose;
    bool mEnableLogging = true;
    static int sCnt; ///< subscribers that got a file name
};

} // namespace Hy
