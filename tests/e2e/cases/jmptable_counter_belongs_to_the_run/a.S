l0:
	.jmptable l0
l1:
	.jmptable l1
l2:
	.jmptable l2
l3:
	.jmptable l3
l4:
	.jmptable l4
l5:
	.jmptable l5
l6:
	.jmptable l6
l7:
	.jmptable l7
l8:
	.jmptable l8
l9:
	.jmptable l9
l10:
	.jmptable l10
	.section .other, "ax", @progbits
m:
	.jmptable m