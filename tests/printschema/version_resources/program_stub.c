/* A program that only carries a version resource for the application detection tests. */
int main(void) { return 0; }
