__attribute__((visibility("default"))) int plugin_answer(void)
{
    return 42;
}
