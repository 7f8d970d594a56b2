#pragma once

class RVGitCommandErrorDefinitionManager;

/// Registers the rows of every class that has some. Called once, when the default manager is made.
void registerGitErrorDefinitions(RVGitCommandErrorDefinitionManager& manager);
