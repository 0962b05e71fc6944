#include "app/CompletionCounting.h"

namespace kestrant {

CompletionCounting::CompletionCounting(const InformationDictionary& information,
                                       const QString& preferencesFile, const QString& supportFolder)
    : defaults_(preferencesFile, scheduler_)
    , reporter_(
          {.context = context_,
           .clock = clock_,
           .defaults = defaults_,
           .information = information,
           .folder = supportFolder + u'/' + QString::fromLatin1(AggregateCompletionReporter::folderName)}) {}

}  // namespace kestrant
