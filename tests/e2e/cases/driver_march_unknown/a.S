# nothing to assemble
