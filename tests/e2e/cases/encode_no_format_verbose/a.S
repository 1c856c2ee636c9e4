	ldw et, sp[3]
