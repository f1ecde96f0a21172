// The checks. Each function appends the findings of its subject, the same ones in the same order whatever is
// found.
#pragma once

#include "diagnose/machine.h"
#include "diagnose/product.h"
#include "diagnose/report.h"

namespace quill::diagnose {

struct subject
{
    const machine& computer;
    const product_constants& product;
    const product_settings& settings;
    const system_facts& system;
};

// All checks.
report diagnose(const subject& subject);

void check_system(const subject& subject, report& findings);
void check_installation(const subject& subject, report& findings);
void check_registration(const subject& subject, report& findings);
void check_content_types(const subject& subject, report& findings);
void check_library(const subject& subject, report& findings);
void check_viewer(const subject& subject, report& findings);
void check_blocking(const subject& subject, report& findings);
void check_tabs(const subject& subject, report& findings);
void check_folders(const subject& subject, report& findings);
void check_settings(const subject& subject, report& findings);
void check_helper(const subject& subject, report& findings);

} // namespace quill::diagnose
