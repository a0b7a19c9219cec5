#include "base/progress.h"

#include "base/environment.h"
#include "base/lexicon.h"

namespace ravelo {

void set_progress_listener(Environment& env, ProgressListener listener) {
    env.progress_listener = std::move(listener);
}

Progress::Progress(Environment* env, const std::string& title)
    : env_(env), title_(substitute_terms(title, env ? env->language : kProceduralLanguage)) {}

bool Progress::update(double fraction) {
    if (!env_ || !env_->progress_listener) return false;
    return env_->progress_listener(title_, fraction);
}

}  // namespace ravelo
