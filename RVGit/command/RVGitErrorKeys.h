#pragma once

// User-info keys of error records. The value of each is its own name.

// Filled in for every failed command.
inline constexpr char RVGitBinaryVersionErrorKey[] = "RVGitBinaryVersionErrorKey";
inline constexpr char RVGitCommandCallErrorKey[] = "RVGitCommandCallErrorKey";
inline constexpr char RVGitCommandExitCodeErrorKey[] = "RVGitCommandExitCodeErrorKey";
inline constexpr char RVGitCommandErrorOutputErrorKey[] = "RVGitCommandErrorOutputErrorKey";
inline constexpr char RVGitCommandStandardOutputErrorKey[] = "RVGitCommandStandardOutputErrorKey";
inline constexpr char RVGitCommandEnvironmentErrorKey[] = "RVGitCommandEnvironmentErrorKey";
inline constexpr char RVGitRepositoryPathErrorKey[] = "RVGitRepositoryPathErrorKey";

// Filled in by a parser that could not read a line.
inline constexpr char RVGitOutputParserNameErrorKey[] = "RVGitOutputParserNameErrorKey";
inline constexpr char RVGitOutputParserLineErrorKey[] = "RVGitOutputParserLineErrorKey";

// Filled in by particular commands, or by the capture groups of error rows.
inline constexpr char RVGitConfigFileErrorKey[] = "RVGitConfigFileErrorKey";
inline constexpr char RVGitConfigKeyErrorKey[] = "RVGitConfigKeyErrorKey";
inline constexpr char RVGitConfigNewSectionNameErrorKey[] = "RVGitConfigNewSectionNameErrorKey";
inline constexpr char RVGitConfigSectionNameErrorKey[] = "RVGitConfigSectionNameErrorKey";
inline constexpr char RVGitConfigValueErrorKey[] = "RVGitConfigValueErrorKey";
inline constexpr char RVGitDestinationFilePathErrorKey[] = "RVGitDestinationFilePathErrorKey";
inline constexpr char RVGitErrorOutputErrorKey[] = "RVGitErrorOutputErrorKey";
inline constexpr char RVGitFilePathErrorKey[] = "RVGitFilePathErrorKey";
inline constexpr char RVGitFilePathsErrorKey[] = "RVGitFilePathsErrorKey";
inline constexpr char RVGitIgnoresPathErrorKey[] = "RVGitIgnoresPathErrorKey";
inline constexpr char RVGitMultipleRefNamesErrorKey[] = "RVGitMultipleRefNamesErrorKey";
inline constexpr char RVGitNewRefNameErrorKey[] = "RVGitNewRefNameErrorKey";
inline constexpr char RVGitNewRemoteNameErrorKey[] = "RVGitNewRemoteNameErrorKey";
inline constexpr char RVGitNewSubmoduleNameErrorKey[] = "RVGitNewSubmoduleNameErrorKey";
inline constexpr char RVGitObjectHashErrorKey[] = "RVGitObjectHashErrorKey";
inline constexpr char RVGitObjectReferenceErrorKey[] = "RVGitObjectReferenceErrorKey";
inline constexpr char RVGitPatchErrorKey[] = "RVGitPatchErrorKey";
inline constexpr char RVGitPatchLineNumberErrorKey[] = "RVGitPatchLineNumberErrorKey";
inline constexpr char RVGitRebaseCurrentStepErrorKey[] = "RVGitRebaseCurrentStepErrorKey";
inline constexpr char RVGitRebaseLastStepErrorKey[] = "RVGitRebaseLastStepErrorKey";
inline constexpr char RVGitRebaseSubjectErrorKey[] = "RVGitRebaseSubjectErrorKey";
inline constexpr char RVGitRefNameErrorKey[] = "RVGitRefNameErrorKey";
inline constexpr char RVGitRefSpecErrorKey[] = "RVGitRefSpecErrorKey";
inline constexpr char RVGitRemoteNameErrorKey[] = "RVGitRemoteNameErrorKey";
inline constexpr char RVGitRemoteURLErrorKey[] = "RVGitRemoteURLErrorKey";
inline constexpr char RVGitRevisionErrorKey[] = "RVGitRevisionErrorKey";
inline constexpr char RVGitSourceFilePathErrorKey[] = "RVGitSourceFilePathErrorKey";
inline constexpr char RVGitStashIndexErrorKey[] = "RVGitStashIndexErrorKey";
inline constexpr char RVGitSubmoduleNameErrorKey[] = "RVGitSubmoduleNameErrorKey";
inline constexpr char RVGitSubmodulePathErrorKey[] = "RVGitSubmodulePathErrorKey";
