// The recipes of the simulator's page, as they stand there but for the build directory.
#include "tests/support/child_program.h"
#include "tests/support/private_network_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace k740::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRecipes = 5;
// This one makes network namespaces that everybody on the machine sees, which no test may do.
constexpr const char* kNotHere = "ip netns add";

/// The text of each block of shell commands.
std::vector<std::string> Recipes() {
    std::vector<std::string> recipes;
    std::ifstream page(K740_SIMULATOR_PAGE);
    bool inRecipe = false;
    for (std::string line; std::getline(page, line);) {
        if (line == "```sh") { recipes.emplace_back(); }
        if (inRecipe && line != "```") { recipes.back() += line + '\n'; }
        inRecipe = line == "```sh" || (inRecipe && line != "```");
    }
    return recipes;
}

class PageTest : public OnPrivateNetwork {
protected:
    /// The working directory looks like the root of the repository after a build.
    PageTest() {
        const fs::path sources = fs::path(K740_SIMULATOR_PAGE).parent_path().parent_path();
        for (const char* folder : {"demo", "scenarios"}) { fs::create_directory_symlink(sources / folder, folder); }
        fs::create_directory("build");
        fs::create_directory_symlink(fs::path(K740_SIM_PROGRAM).parent_path(), "build/release");
    }
};

TEST_F(PageTest, TheRecipesWorkInTheirOrder) {
    ASSERT_EQ(0, ChildProgram("jq --version").End()) << "The page uses jq: install Debian's package of that name.";
    std::vector<std::string> recipes = Recipes();
    ASSERT_EQ(kRecipes, recipes.size());
    ASSERT_EQ(1, std::erase_if(recipes, [](const std::string& recipe) { return recipe.starts_with(kNotHere); }));
    for (const std::string& recipe : recipes) {
        std::ofstream("recipe.sh") << "set -e\n" << recipe;
        ChildProgram shell("sh recipe.sh");
        const std::string output = shell.Rest();
        EXPECT_EQ(0, shell.End()) << recipe << output;
        EXPECT_NE("", output) << recipe;
    }
    EXPECT_TRUE(fs::exists("heard/zcu33-zone1.wav"));
}

} // namespace
} // namespace k740::test
