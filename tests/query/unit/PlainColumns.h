// Which source of a query's text a name belongs to, found by walking the tokens: the reference that
// the product's look-up is compared with. Nothing is kept between calls.
#pragma once

#include "query/QueryContext.h"

namespace kestra::test {

// The declaration of the column that the token at position p names; null if it names none.
const DiagParamDef* PlainColumn(QueryContext& context, size_t p);

}  // namespace kestra::test
