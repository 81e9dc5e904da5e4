// The shared library is made of the static core as a whole; a target needs a source of its own,
// and this file is it.
