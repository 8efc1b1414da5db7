// Leaks on purpose. A test expects the leak to be found: without it, silence of the leak detector
// would prove nothing about the other tests.

int main()
{
    int *volatile leaked = new int[16];
    leaked = nullptr;
    return leaked == nullptr ? 0 : 1;
}
