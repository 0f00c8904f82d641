#include <Hy/HyPluginManager.h>

#include <Hy/HyPluginFuncInterface.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace Hy::HyPluginSystem {
namespace {

/// What a process of its own prints that does these things to the manager, among the plug-ins.
std::string run(const std::string& commands, const std::string& environment = {}) {
    const std::string line = "cd " PLUGIN_FOLDER " && " + environment + " " PLUGIN_RUNNER " " +
                             commands + " 2>/dev/null";
    std::FILE* pipe = popen(line.c_str(), "r");
    std::string output;
    for (int c; (c = std::getc(pipe)) != EOF;)
        output += static_cast<char>(c);
    if (pclose(pipe) != 0)
        return "failed after: " + output;
    return output.ends_with("done\n") ? output.substr(0, output.size() - 5) : output;
}

TEST(HyPluginManagerTest, RefusesWhatDoesNotFit) {
    const auto symbol = [](const char* name) {
        return std::string("Symbol ") + name + " was not found in this plugin.";
    };
    const std::string incompatible =
        "This plugin is incompatible with the current version of Halcyr.";
    const std::string noBuild = "There is no build information found for this plugin.";
    const struct {
        const char* file;
        std::string message;
    } cases[] = {
        {"bad/no_version.so", symbol("GetHyPluginSystemVersion")},
        {"other/no_info.so", symbol("GetPluginInfo")},
        {"bad/no_initialize.so", symbol("InitializePlugin")},
        {"bad/no_uninitialize.so", symbol("UninitializePlugin")},
        {"bad/too_old.so", incompatible},
        {"bad/too_new.so", incompatible},
        {"other/too_new_to_tell.so", noBuild},
        {"bad/no_build_info.so", noBuild},
        {"bad/debug_build.so",
         "This plugin was built in debug mode while Halcyr was built in  release mode"},
        {"bad/other_compiler.so",
         "This plugin was created with a  lower version of MS Visual C++ Compiler"},
        {"other/newer_compiler.so",
         "This plugin was created with a  higher version of MS Visual C++ Compiler"},
        {"bad/no_name.so", "This plugin has some invalid informations."},
        {"other/throwing_info.so", "This plugin has some invalid informations."},
        {"bad/throwing.so", "out of coffee"},
        {"bad/orphan.so", "Missing dependency."},
        {"bad/cut.so", "bad/cut.so: file too short"},
    };
    for (const auto& c : cases) {
        const std::string path = c.file;
        const std::string name = path.substr(path.find('/') + 1, path.size() - path.find('/') - 4);
        const std::string ends = path == "bad/throwing.so" ? "  throwing ends\n" : "";
        EXPECT_EQ(run("listen load=" + path + " list mapped=" + path),
                  "error " + path + ": " + c.message + "\n" + ends + "plug-ins:\ngone\n");
    }
    EXPECT_EQ(run("listen load=other/failing list"),
              "error other/failing.so: Problem calling InitializePlugin function\n"
              "  failing ends\nplug-ins:\n");
    EXPECT_EQ(run("load=bad/orphan"), // nobody listens
              "HyWarning{0}: HyPluginManager: Missing dependency. (bad/orphan.so)\n");
    EXPECT_EQ(run("load=none"),
              "HyWarning{0}: HyPluginManager - Error cannot find plugin file: none\n");
    EXPECT_EQ(
        run("listen load=other/garbled_build list"),
        "  garbled_build begins\nHyWarning{0}: An error occurred when parsing the build info\n"
        "plug-ins: garbled_build\n");
}

TEST(HyPluginManagerTest, TakesWhatFits) {
    EXPECT_EQ(run("listen load=other/british load=other/first_system list"),
              "  british begins\n  first_system begins\nplug-ins: british first_system\n");
    EXPECT_EQ(run("cuts=good/base.so"), "cut ones failed\n");
    // The first file ends the search, whether or not it passes.
    EXPECT_EQ(run("search=good load=base load=good/base loaded=base loaded=bas loaded=baseg "
                  "loaded=base.hyp loaded= loaded=middle"),
              "  base begins\nyes\nno\nyes\nyes\nno\nno\n");
    EXPECT_EQ(run("dir-only=base list loaded=mid"), "  base begins\nplug-ins: base\nno\n");
    EXPECT_EQ(run("load=base list", "HALCYR_PLUGIN_PATH='\"nowhere\"::good'"),
              "  base begins\nplug-ins: base\n");
    EXPECT_EQ(run("info=other/british.so list mapped=other/british.so info=bad/no_name.so"),
              "info british 2.1.0 other/british.so\nplug-ins:\ngone\ninfo  2.1.0 bad/no_name.so\n");
}

TEST(HyPluginManagerTest, LoadsAndUnloadsByDependencies) {
    const std::string up = "  base begins\n  middle begins\n  top begins\n";
    EXPECT_EQ(run("dir=good queue needs=middle provides=middle list"),
              up + "plug-ins: base middle stepper top\nplug-ins: base middle\n"
                   "plug-ins: middle top\nplug-ins: base middle stepper top\n")
        << "of one file each, though the first calls itself otherwise";
    EXPECT_EQ(run("load=good/base load=good/middle load=good/top unload=good/base.so list "
                  "mapped=good/base.so"),
              up + "  top ends\n  middle ends\n  Base Services ends\nplug-ins:\ngone\n");
    EXPECT_EQ(run("listen dir=good refuse-out=middle unload=good/base.so list"),
              up + "asked for top\n  top ends\nasked for middle\n"
                   "plug-ins: base middle stepper\n");
    EXPECT_EQ(run("dir=good cycle unload-all list"), up + "plug-ins: middle top base stepper\n"
                                                          "  Base Services ends\n  top ends\n"
                                                          "  middle ends\nplug-ins:\n")
        << "also where an application has made a circle";
    EXPECT_EQ(run("load=other/stubborn unload-all list reset list"),
              "  stubborn begins\nplug-ins: stubborn\nplug-ins: stubborn\n");
    EXPECT_EQ(run("listen load=good/middle load=good/base load=good/middle list"),
              "error good/middle.so: Missing dependency.\n  base begins\n  middle begins\n"
              "plug-ins: base middle\n");
    EXPECT_EQ(run("listen load=good/base load=other/upper_case"),
              "  base begins\nerror other/upper_case.so: Missing dependency.\n");
    EXPECT_EQ(run("listen load=good/stepper load=bad/picky list"),
              "error bad/picky.so: HyDependency not matching with the version.\n"
              "plug-ins: stepper\n");
    const std::string circle = run("listen dir=bad list");
    EXPECT_NE(circle.find("error bad/cycle_a.so: Circular dependency detected.\n"
                          "error bad/cycle_b.so: HyDependency failed to load.\n"
                          "error bad/cycle_a.so: HyDependency failed to load.\n"),
              std::string::npos)
        << circle;
    EXPECT_TRUE(circle.ends_with("plug-ins:\n")) << circle;
}

TEST(HyPluginManagerTest, AsksAllListeners) {
    EXPECT_EQ(run("listen listen-twice refuse-in=british load=other/british list "
                  "mapped=other/british.so"),
              "plug-ins:\ngone\n");
    EXPECT_EQ(run("listen listen-twice load=other/british refuse-out=british unload-all list reset "
                  "list"),
              "  british begins\nasked for british\nasked for british\nplug-ins: british\n"
              "asked for british\nasked for british\nplug-ins: british\n");
}

TEST(HyPluginManagerTest, DropsWhatPluginsLeaveBehind) {
    const auto left = [](const char* what) {
        return std::string("HyPluginManager::unload: other/leftover.so has left ") + what +
               " behind, which is dropped.";
    };
    const std::string usual = "HyWarning{0}: " + left("an object") +
                              "\nHyWarning{0}: " + left("a listener") +
                              "\nHyWarning{0}: " + left("an extension factory") + "\n";
    const std::string last = "HyWarning{0}: " + left("a stepper factory");
    EXPECT_EQ(run("frame load=other/leftover frame step listen unload-all frame objects step "
                  "mapped=other/leftover.so"),
              "steppers: 0\nsteppers: 2\nextension steps\nasked for leftover\nobject removed\n"
              "extension ends\n" +
                  usual + last + "\nsteppers: 1\nobjects: 0\ngone\n");
    EXPECT_EQ(run("load-with=stepper frame unload-all frame step mapped=other/leftover.so"),
              "steppers: 2\n" + usual + last + "\nHyWarning{0}: " + left("a stepper") +
                  "\nHyWarning{0}: HyPluginManager::unload: other/leftover.so stays in memory, as "
                  "it is still in use.\nsteppers: 0\nin memory\n");
    EXPECT_EQ(run("frame dir=good frame step delete frame step"),
              "steppers: 0\n  base begins\n  middle begins\n  top begins\nsteppers: 1\n"
              "  top ends\n  middle ends\n  Base Services ends\nsteppers: 0\n");
}

TEST(HyPluginManagerTest, KeepsTheEnvironment) {
    for (const char* value : {"", "/x", "/x:/y"})
        EXPECT_EQ(run("load=good/base load=bad/cut.so library-path",
                      "LD_LIBRARY_PATH='" + std::string(value) + "'"),
                  "  base begins\nHyWarning{0}: HyPluginManager: bad/cut.so: file too short "
                  "(bad/cut.so)\n'" +
                      std::string(value) + "'\n");
    EXPECT_TRUE(run("load=good/base library-path", "env -u LD_LIBRARY_PATH").ends_with("unset\n"));
    EXPECT_EQ(
        run("register=inside load-static load=good/base info=good/base.so list",
            "HALCYR_PLUGIN_DISABLED=1"),
        "HyWarning{0}: HyPluginManager::readPaths(): NOT loading plugin: :/inside, env var is "
        "set: HALCYR_PLUGIN_DISABLED\nHyWarning{0}: HyPluginManager::readPaths(): NOT loading "
        "plugin: good/base.so, env var is set: HALCYR_PLUGIN_DISABLED\ninfo  0.0.0 \n"
        "plug-ins:\n");
}

TEST(HyPluginManagerTest, LoadsStaticPlugins) {
    EXPECT_EQ(
        run("register=inside register=inside load-static list load-static list "
            "loaded=inside unload=:/inside list load-static unregister=inside list load-static "
            "list"),
        "plug-ins: inside\nplug-ins: inside\nyes\nplug-ins:\nplug-ins:\nplug-ins:\n");
    EXPECT_EQ(run("register=x"),
              "HyWarning{0}: HyPluginManager::RegisterStaticPlugin: the name must "
              "have two characters and the plug-in must not be null.\n");
}

TEST(HyPluginManagerTest, OpensPlainLibraries) {
    EXPECT_EQ(run("library=good/base.so"), "open\n");
    EXPECT_EQ(run("library=none.so"),
              "not open\nHyWarning{0}: HyPluginManager : File could not be found: (none.so)\n");
    EXPECT_EQ(run("library=good"),
              "not open\nHyWarning{0}: HyPluginManager : File could not be found: (good)\n");
}

} // namespace
} // namespace Hy::HyPluginSystem
