x: ) ( ] 3 [
	nop
