/* What a test reads comments and a build id from. */
__attribute__((used, section(".kestra.comments"))) static const char comments[] =
    "Diagnostic plugin\0not part of it";

int kestra_commented_library(void) {
  return comments[0];
}
