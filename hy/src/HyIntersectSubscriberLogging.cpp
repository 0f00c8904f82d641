#include <Hy/HyIntersectSubscriberLogging.h>

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyFrame.h>
#include <Hy/HyGeometry.h>
#include <Hy/HyIntersectResult.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

namespace Hy {
namespace {

constexpr int kEvents[] = {kEventFirst, kEventActive};
constexpr std::size_t kNameSize = 512; ///< of the log, with the ending zero
constexpr std::size_t kWordSize = 32;  ///< of the level

struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Puts a number before the last dot of a path's final component, or at its end.
std::string numbered(std::string path, int number) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    const bool inName = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    path.insert(inName ? dot : path.size(), std::to_string(number));
    return path;
}

template <class Named>
const char* nameOf(const Named* object) {
    return object ? object->getName().c_str() : "none";
}

const HyMaterial* materialOf(const HyCollisionGeometry* geometry) {
    return geometry ? geometry->getMaterial() : nullptr;
}

const HyUniverse* universeOf(const HyCollisionGeometry* geometry) {
    const HyPart* part = geometry ? geometry->getPart() : nullptr;
    return part ? part->getUniverse() : nullptr;
}

} // namespace

int HyIntersectSubscriberLogging::sCnt = 0;

HyIntersectSubscriberLogging::HyIntersectSubscriberLogging(const char* configFile) {
    init(configFile);
}

HyIntersectSubscriberLogging::HyIntersectSubscriberLogging() {
    init(std::getenv(kEnvVariableName));
}

HyIntersectSubscriberLogging::~HyIntersectSubscriberLogging() {
    if (mFile)
        std::fclose(mFile);
}

void HyIntersectSubscriberLogging::init(const char* configFile) {
    if (!configFile || !*configFile) {
        HyWarning(0,
                  "The config file name is invalid or NULL (%s). Check the environment variable "
                  "(%s)",
                  "", kEnvVariableName);
        return;
    }
    const std::unique_ptr<std::FILE, Closer> config(std::fopen(configFile, "r"));
    if (!config) {
        HyWarning(0, "Cannot open config file (%s). Check the environment variable (%s)",
                  configFile, kEnvVariableName);
        return;
    }
    readConfig(config.get(), configFile);
}

void HyIntersectSubscriberLogging::readConfig(std::FILE* config, const char* configFile) {
    char name[kNameSize] = "";
    if (std::fscanf(config, "filename: %511s\n", name) != 1 || !*name) {
        HyWarning(0,
                  "The first entry in the config file *(%s) must be \"filename: "
                  "myLoggingFileName\"",
                  configFile);
        return;
    }
    const std::string path = numbered(name, sCnt++);
    char word[kWordSize] = "";
    if (std::fscanf(config, "detail_level: %31s", word) == 1) {
        char* end = word;
        const long number = std::strtol(word, &end, 10);
        const std::string level = word;
        if (end != word && number >= 0)
            mDetailsLevel = static_cast<DetailsLevel>(std::min(number, 127L));
        else if (level.starts_with("terse"))
            mDetailsLevel = kTerse;
        else if (level.starts_with("verbose"))
            mDetailsLevel = kVerbose;
    }
    mFile = std::fopen(path.c_str(), "w");
    if (!mFile)
        HyWarning(0,
                  "Cannot create file (%s) for logging value. (See \"filename: %s\" in config file "
                  "%s",
                  path.c_str(), path.c_str(), configFile);
}

int HyIntersectSubscriberLogging::registerLogging(HyUniverse* universe) {
    if (!universe)
        return 2;
    if (!mFile)
        return 1;
    for (const int event : kEvents)
        universe->addIntersectSubscriber(HyUniverse::kResponsePart, HyUniverse::kResponsePart,
                                         static_cast<eIntersectEventType>(event), this, 0);
    return 0;
}

int HyIntersectSubscriberLogging::unregisterLogging(HyUniverse* universe) {
    if (!universe)
        return 2;
    if (!mFile)
        return 1;
    for (const int event : kEvents)
        universe->removeIntersectSubscriber(HyUniverse::kResponsePart, HyUniverse::kResponsePart,
                                            static_cast<eIntersectEventType>(event), this);
    return 0;
}

void HyIntersectSubscriberLogging::notifyDisjoint(eIntersectEventType, HyIntersectResult*) {}

void HyIntersectSubscriberLogging::notifyIntersect(eIntersectEventType, HyIntersectResult* result,
                                                   HyDynamicsResponseInput*) {
    HyAssertImplementation(__FILE__, __LINE__, mFile != nullptr,
                           "HyIntersectSubscriberLogging: is not valid");
    if (!mFile || !mEnableLogging || !result || !result->isPairTouching())
        return;
    HyCollisionGeometry *g1 = nullptr, *g2 = nullptr;
    result->getCollisionGeometryPair(g1, g2);
    const HyUniverse* universe = universeOf(g1) ? universeOf(g1) : universeOf(g2);
    HyAssertImplementation(__FILE__, __LINE__, universe != nullptr,
                           "No universe found for logging");
    const HyFrame* frame = HyFrame::currentInstance();
    if (!universe || !frame || !g1 || !g2)
        return;
    const HyMaterial *m1 = materialOf(g1), *m2 = materialOf(g2);
    std::fprintf(mFile, "%8f, %s, %s, %s, %s, %s", frame->getAbsoluteTime(), nameOf(universe),
                 nameOf(g1->getGeometry()), nameOf(m1), nameOf(g2->getGeometry()), nameOf(m2));
    printContactMaterial(universe->getContactMaterial(m1, m2));
    std::fputs("\n", mFile);
}

void HyIntersectSubscriberLogging::printContactMaterial(const HyContactMaterial* material) const {
    if (!material) {
        std::fputs("No contact material", mFile);
        return;
    }
    std::fprintf(mFile, ", %s", material->getName().c_str());
    printRollingResistance(*material);
    printFriction(*material);
    if (mDetailsLevel != kVerbose)
        return;
    const DyncContactMaterial& values = material->getValue();
    std::fprintf(mFile, ", %16.6g, %16.6g, %16.6g, %16.6g, %16.6g, %16d", values.restitution,
                 values.velThreshold, values.compliance, values.damping, values.max_adhesive_force,
                 values.options);
}

void HyIntersectSubscriberLogging::printRollingResistance(const HyContactMaterial& material) const {
    const HyRollingResistanceCoeffParams& rolling = material.getRollingResistanceCoeffParams();
    const bool verbose = mDetailsLevel == kVerbose;
    switch (rolling.mType) {
    case kFirstOrderFormula:
    case kSecondOrderFormula:
        std::fputs(rolling.mType == kFirstOrderFormula ? ", 1st order" : ", 2nd order", mFile);
        if (verbose)
            std::fprintf(mFile, ", %10.6f, %10.6f", rolling.mBaseCoeff, rolling.mSpeedFactor);
        return;
    case kTable:
        std::fputs(verbose ? ",Table: " : ", Table", mFile);
        for (int i = 0; verbose && i < rolling.mTable.size(); ++i)
            std::fprintf(mFile, "(%g %g)", rolling.mTable.getX()[i], rolling.mTable.getY()[i]);
        return;
    case kPressureModel:
        std::fputs(verbose ? ", Pressure Model" : ", PressureModel", mFile);
        if (verbose)
            std::fprintf(mFile, ", %10.6f, %10.6f, %10.6f, %10.6f, %10.6f", rolling.mBaseCoeff,
                         rolling.mSpeedFactorPressureModel, rolling.mPressureExponent,
                         rolling.mNormalForceExponent, rolling.mNominalPressure);
        return;
    }
    if (verbose)
        std::fputs(", Unknown", mFile);
}

void HyIntersectSubscriberLogging::printFriction(const HyContactMaterial& material) const {
    const DyncContactMaterial& values = material.getValue();
    const auto isNone = [&](int axis) {
        return values.model[axis] == DyncContactMaterial::kFrictionModelNone;
    };
    if (isNone(0) && isNone(1)) {
        std::fputs(", None", mFile);
        return;
    }
    const bool both = !isNone(0) && !isNone(1);
    std::fputs(both ? ", 2 directions" : ", 1 direction", mFile);
    if (mDetailsLevel != kVerbose)
        return;
    printFrictionAxis(material, 0);
    if (both)
        printFrictionAxis(material, 1);
}

void HyIntersectSubscriberLogging::printFrictionAxis(const HyContactMaterial& material,
                                                     int axis) const {
    struct Model {
        const char* name;
        bool hasValue, isScaled;
    };
    static constexpr Model kModels[] = {{"Box", true, false},
                                        {"Scaled Box", true, true},
                                        {"Box proportional Low", true, false},
                                        {"Box proportional High", true, false},
                                        {"Scaled Box Fast", true, true},
                                        {"Neutral", false, false},
                                        {"None", false, false}};
    const DyncContactMaterial& values = material.getValue();
    std::fputs(axis == 0 ? ", Linear Primary" : ", Linear Secondary", mFile);
    const int model = values.model[axis];
    if (model < 0 || model >= static_cast<int>(std::size(kModels)))
        std::fputs(", Unknown", mFile);
    else
        std::fprintf(mFile, ", Friction Model %s", kModels[model].name);
    if (model >= 0 && model < static_cast<int>(std::size(kModels)) && kModels[model].hasValue)
        std::fprintf(mFile, ", %16.6g",
                     kModels[model].isScaled ? values.sbCoefficient[axis]
                                             : values.boxMaxForce[axis]);
    std::fprintf(mFile, ", slip,  %16.6g, slide, %16.6g, static friction scale, %16.6g",
                 values.slip[axis], values.slide[axis], values.staticFrictionScale[axis]);
}

} // namespace Hy
