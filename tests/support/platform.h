// The platform's system information as a test sets it.
#pragma once

namespace support {

enum class Product { records, does_not_record, cannot_be_asked };

void set_product(Product product);

/// How often the platform was asked whether the product records.
int support_questions();

} // namespace support
