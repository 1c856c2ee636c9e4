
;;
a: b: nop
	ldw r0, sp[1]
foo = 3
	.set bar, 3 ; retsp 0
	.section .dp.data, "awd", @progbits, 4, 2 $M 1
	.loc 1 2 3 is_stmt 0
	.word a ? b $: c ? d $: e, (1 + x) * y
