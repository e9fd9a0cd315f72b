// A library that loads well and has nothing of a JVM in it.
