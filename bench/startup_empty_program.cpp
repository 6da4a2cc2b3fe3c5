/// An empty program. Its run time is that of loading its libraries.
int main() { return 0; }
