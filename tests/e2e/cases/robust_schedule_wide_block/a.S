# Forty independent instructions in one block: the search for their best order is bounded, so
# this assembles at once instead of trying hundreds of millions of orders.
	.text
	nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop ; nop
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	add r3, r7, r11
	add r0, r4, r8
	add r1, r5, r9
	add r2, r6, r10
	retsp 0
